// The expansion of tags, passes counted, against the same steps carried out one by one in place.
// The bytes are the distance from the limit of passes, a line with the extra columns of a row, each
// with a
// "|" behind it, and the line that is expanded.

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "input.h"
#include "render/render.h"
#include "support/rows.h"
#include "util/fields.h"

namespace {

using toplist::RankedRows;
using toplist::TradeRow;
using toplist::fuzz::require;

std::int32_t number(const std::string& text) {
  return static_cast<std::int32_t>(std::strtol(text.c_str(), nullptr, 10));
}

/// The value of a tag, and how many characters it replaces.
std::pair<std::string, std::size_t> slow_value(const std::string& name, TradeRow row, int column,
                                               bool closes_short) {
  const auto entry = [&](int i) {
    const bool held = i >= 0 && i < static_cast<int>(row.extra_columns.size());
    return std::string(held ? row.extra_columns[static_cast<std::size_t>(i)] : "");
  };
  if (const auto* counter = toplist::test::find_counter(row, name)) {
    return {std::to_string(*counter), 13};
  }
  if (name == "tid") return {row.id, 11};
  if (name == "dom") return {row.domain, 11};
  if (name == "url") return {row.url, 11};
  if (name == "lnk") return {"?id=" + row.id + "&u=" + row.url, 11};
  if (name == "tit") return {entry(0), 11};
  if (name == "des") return {entry(1), 11};
  if (name == "img") return {entry(2), 11};
  if (name.starts_with("att")) return {entry(column + 3), 13};
  return {"", closes_short ? 11 : 13};
}

/// Expands the first tag of a line in place. Comparing beyond the line's end throws
/// std::out_of_range, which is just where a run is to stop.
void slow_step(std::string& line, std::size_t p, RankedRows rows) {
  const bool closes_short = line.compare(p + 9, 2, "%%") == 0;
  const bool closes_long = line.compare(p + 11, 2, "%%") == 0;
  if (!closes_short && !closes_long) return;
  std::string name = line.substr(p + 2, 3);
  std::int32_t rank = number(line.substr(p + 6, 3));
  std::int32_t column = -1;
  if (closes_long) {
    name = line.substr(p + 2, 5);
    rank = number(line.substr(p + 8, 3));
    if (name.starts_with("att")) column = number(line.substr(p + 5, 2));
  }
  if (static_cast<std::uint32_t>(rank) >= rows.size()) {
    line.replace(p, name.size() == 5 ? 13 : 11, " ");
    return;
  }
  const auto [value, replaced] =
      slow_value(name, *rows[static_cast<std::size_t>(rank)], column, closes_short);
  line.replace(p, replaced, value);
}

/// The expansion of a line one step after the other, each from the line's start. Throws
/// std::out_of_range where a run is to stop.
std::string slow_expansion(std::string line, RankedRows rows, std::int64_t& passes) {
  for (;;) {
    const std::size_t p = line.find("%%");
    if (p != std::string::npos) slow_step(line, p, rows);
    if (++passes > 50000 || line.find("%%") == std::string::npos) return line;
  }
}

/// One row with extra columns, which may hold tags, and one without any.
std::vector<TradeRow> make_rows(std::string_view columns) {
  std::vector<TradeRow> rows = {toplist::test::make_row("42", "a.example"),
                                toplist::test::make_row("7", "a.domain.longer.than.its.tag")};
  rows[0].url = "http://a.example/";
  rows[0].periods[toplist::kPeriod60].rin = -5;
  toplist::FieldReader fields(columns);
  for (std::string_view column; fields.next(column);) rows[0].extra_columns.push_back(column);
  return rows;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  toplist::fuzz::Input input(bytes, size);
  // Near the limit: a value that brings itself in again would take the slow way too long.
  const std::int64_t before = toplist::kPassLimit + 1 - input.integer<std::uint8_t>();
  const std::string_view text = input.text(4096);
  const std::size_t columns = std::min(text.find('\n'), text.size());
  const std::vector<TradeRow> rows = make_rows(text.substr(0, columns));
  const std::vector<const TradeRow*> ranked{&rows[0], &rows[1]};
  const std::string line(text.substr(std::min(columns + 1, text.size())));

  std::int64_t passes = before;
  std::string page = line;
  const bool complete = toplist::expand_tags(page, ranked, passes);
  std::int64_t slow_passes = before;
  try {
    const std::string expected = slow_expansion(line, ranked, slow_passes);
    require(complete, "a stop that the steps do not make");
    require(page == expected, "another page than step by step");
    require(passes == slow_passes, "another count of passes than step by step");
  } catch (const std::out_of_range&) {
    require(!complete, "no stop where the steps make one");
  }
  try {
    toplist::render_template("", line, ranked);
  } catch (const toplist::StrayMark&) {
  }
  return 0;
}
