// Sorts and filters the tables. Without this script they are complete, but stay as they are.
(() => {
  const textOf = (row, column) => row.cells[column].textContent.trim();
  const numberOf = text => parseFloat(text.replace(/,/g, "").replace("\u2212", "-"));

  const sort = (table, heading, column) => {
    const falls = heading.getAttribute("aria-sort") !== "descending";
    for (const other of table.tHead.rows[0].cells) other.removeAttribute("aria-sort");
    heading.setAttribute("aria-sort", falls ? "descending" : "ascending");
    const isNumber = heading.classList.contains("num");
    const keys = new Map([...table.tBodies[0].rows].map(row => {
      const text = textOf(row, column);
      return [row, isNumber ? numberOf(text) || 0 : text];
    }));
    const compare = isNumber ? (a, b) => a - b : (a, b) => b.localeCompare(a);
    table.tBodies[0].append(...[...keys.keys()].sort(
        (a, b) => (falls ? -1 : 1) * compare(keys.get(a), keys.get(b))));
  };

  const tables = [...document.querySelectorAll("table.sortable")];
  for (const table of tables) {
    [...table.tHead.rows[0].cells].forEach((heading, column) => {
      if (heading.classList.contains("fixed")) return;
      const button = document.createElement("button");
      button.append(...heading.childNodes);
      button.addEventListener("click", () => sort(table, heading, column));
      heading.append(button);
    });
  }
  if (tables.length === 0) return;

  const label = document.createElement("label");
  label.className = "filter";
  const input = document.createElement("input");
  input.type = "search";
  label.append("Filter partners ", input);
  tables[0].before(label);
  input.addEventListener("input", () => {
    const sought = input.value.toLowerCase();
    for (const table of tables) {
      for (const row of table.tBodies[0].rows) {
        row.hidden = !textOf(row, 1).toLowerCase().includes(sought);
      }
      const folded = table.closest("details");
      if (folded && sought) folded.open = true;
    }
  });
})();
