// The bar above a page of the preview. It polls: a connection that stays open would keep a page of
// its own from each browser, which opens only six to one server.
"use strict";

const POLL_MS = 100;
const LOST_MS = 1000;
const get = (id) => document.getElementById(id);
const frame = get("page");
let state = null;
let hiddenErrors = "";  // the revision of errors that the user has hidden

const addressOf = (url) => url.split("/").map(encodeURIComponent).join("/");

/** The address in the frame; null when it shows another web site. */
function frameLocation() {
  try {
    return frame.contentWindow.location.href === "about:blank" ? null : frame.contentWindow.location;
  } catch {
    return null;
  }
}

/** The toplist of the page in the frame; the first one may be asked for as "/". */
function currentToplist() {
  let path = decodeURIComponent(frameLocation()?.pathname ?? location.pathname);
  if (path.endsWith("/")) path += "index.html";
  return state.toplists.find((toplist) => toplist.url === path) ?? null;
}

function startAddress() {
  const hasIndex = state.toplists.some((toplist) => toplist.url === "/index.html");
  if (location.pathname !== "/") return location.pathname + location.search + location.hash;
  return hasIndex || !state.toplists.length ? "/index.html" : addressOf(state.toplists[0].url);
}

function items(list, diagnostics) {
  list.replaceChildren(...diagnostics.map(({file, line, column, message, advice}) => {
    const item = document.createElement("li");
    const place = document.createElement("code");
    place.textContent = [file, line, column].filter(Boolean).join(":");
    const hint = document.createElement("small");
    hint.textContent = advice ?? "";
    item.append(place, message, hint);
    return item;
  }));
}

function nextRun(toplist) {
  const overwritten = toplist.overwritten_by
    ? `, and record ${toplist.overwritten_by} writes over it` : "";
  if (!toplist.built) return toplist.next_run;
  return (toplist.installed ? "builds this page" : "builds the installed template, not this one") + overwritten;
}

function showErrors(toplist) {
  const errors = state.problem
    ? [{message: state.problem, advice: "Run \"toplistctl check\" to see what is wrong."}]
    : toplist?.errors ?? [];
  const key = JSON.stringify(errors);
  get("errors").hidden = errors.length === 0 || key === hiddenErrors;
  get("errors").querySelector("h1").textContent = state.problem
    ? "There is nothing to show" : `${toplist?.source ? "The source" : "The template"} of ${toplist?.page} has an error`;
  items(get("errors").querySelector("ul"), errors);
  get("hide-errors").onclick = () => { hiddenErrors = key; get("errors").hidden = true; };
  if (errors.length === 0) hiddenErrors = "";
}

function showBar() {
  const toplist = currentToplist();
  const options = state.toplists.map((each) => new Option(each.page, each.url, false, each === toplist));
  if (!toplist) options.unshift(new Option(frameLocation()?.pathname ?? "another site", "", false, true));
  get("pages").replaceChildren(...options);
  document.title = `${toplist?.page ?? "Preview"} – preview`;
  for (const part of ["dl", "#findings-button", "#install"]) document.querySelector(part).hidden = !toplist;
  get("findings").hidden ||= !toplist;
  showErrors(toplist);
  if (!toplist) return;
  get("toplist").textContent = `${toplist.template} by ${toplist.order}, record ${toplist.record}`;
  get("places").textContent = `${toplist.shown} of ${toplist.places} filled`;
  get("trades").textContent = `${toplist.passing} of ${toplist.active} pass its settings`;
  get("next-run").textContent = nextRun(toplist);
  get("next-run").className = toplist.built && toplist.installed && !toplist.overwritten_by ? "" : "bad";
  const count = toplist.findings.length;
  get("findings-button").textContent = count === 1 ? "1 finding" : `${count} findings`;
  get("findings-button").className = count ? "some" : "";
  get("findings-button").disabled = count === 0;
  if (count === 0) get("findings").hidden = true;
  items(get("findings"), toplist.findings);
  get("install").className = toplist.install ? "" : "done";
  get("command").textContent = toplist.install ?? (toplist.installed ? "installed" : "");
  get("copy").hidden = !toplist.install;
}

// --- how the page is shown ---

/** Makes the page's rules about the user's colours follow the switch. */
function applyScheme() {
  const scheme = document.querySelector("[name=scheme]:checked").value;
  const visit = (rules) => {
    for (const rule of rules) {
      if (rule.media?.mediaText.includes("prefers-color-scheme") || rule.wasQuery) {
        rule.wasQuery ??= rule.media.mediaText;
        rule.media.mediaText = !scheme ? rule.wasQuery : rule.wasQuery.replace(
          /\(prefers-color-scheme:\s*(\w+)\)/g, (_, wanted) => `(min-width: ${wanted === scheme ? 0 : 99999}px)`);
      }
      if (rule.cssRules) visit(rule.cssRules);
      if (rule.styleSheet) visit(rule.styleSheet.cssRules);
    }
  };
  if (!frameLocation() || !frame.contentDocument.documentElement) return;
  frame.contentDocument.documentElement.style.colorScheme = scheme;
  for (const sheet of frame.contentDocument.styleSheets) {
    try {
      visit(sheet.cssRules);
    } catch {
      // A style sheet of another site keeps its rules to itself.
    }
  }
}

frame.addEventListener("load", () => {
  const shown = frameLocation();
  if (shown) {
    history.replaceState(null, "", shown.pathname + shown.search + shown.hash);
    applyScheme();
    // Partners' sites do not like to be in a frame.
    frame.contentDocument.addEventListener("click", (event) => {
      const link = event.target.closest?.("a[href]");
      if (link && link.origin !== location.origin) link.target = "_blank";
    }, true);
  }
  if (state) showBar();
});

get("pages").addEventListener("change", (event) => {
  frame.contentWindow.location.href = addressOf(event.target.value);
});
get("findings-button").addEventListener("click", () => {
  get("findings").hidden = !get("findings").hidden;
  get("findings-button").setAttribute("aria-expanded", String(!get("findings").hidden));
});
get("copy").addEventListener("click", async () => {
  await navigator.clipboard.writeText(get("command").textContent);
  get("copy").textContent = "Copied";
  setTimeout(() => { get("copy").textContent = "Copy"; }, 1500);
});
get("scheme").addEventListener("change", applyScheme);
get("width").addEventListener("change", (event) => {
  document.querySelector("main").className = event.target.value;
});

// --- changes ---

async function look() {
  const seen = state?.revision ?? "";
  const reply = await fetch(`/.preview/state?seen=${seen}`);
  if (reply.status === 204) return;
  const before = state;
  state = await reply.json();
  if (!before) {
    frame.contentWindow.location.replace(startAddress());
  } else if (before.design !== state.design && frameLocation()) {
    frame.contentWindow.location.reload();
  }
  showBar();
}

async function poll() {
  let pause = POLL_MS;
  try {
    await look();
    get("lost").hidden = true;
  } catch {
    get("lost").hidden = false;
    pause = LOST_MS;
  }
  setTimeout(poll, pause);
}
poll();
