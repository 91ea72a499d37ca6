#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

#include "render/render.h"
#include "support/rows.h"

namespace toplist::test {

inline std::int32_t number(const std::string& text) {
  return static_cast<std::int32_t>(std::strtol(text.c_str(), nullptr, 10));
}

/// The value of a tag, and how many characters it replaces.
inline std::pair<std::string, std::size_t> slow_value(const std::string& name, TradeRow row,
                                                      int column, bool closes_short) {
  const auto entry = [&](int i) {
    const bool held = i >= 0 && i < static_cast<int>(row.extra_columns.size());
    return std::string(held ? row.extra_columns[static_cast<std::size_t>(i)] : "");
  };
  if (const auto* counter = find_counter(row, name)) return {std::to_string(*counter), 13};
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
inline void slow_step(std::string& line, std::size_t p, RankedRows rows) {
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

/// The expansion of a line one step after the other, each from the line's start: what expand_tags()
/// must come to. Throws std::out_of_range where a run is to stop.
inline std::string slow_expansion(std::string line, RankedRows rows, std::int64_t& passes) {
  for (;;) {
    const std::size_t p = line.find("%%");
    if (p != std::string::npos) slow_step(line, p, rows);
    if (++passes > 50000 || line.find("%%") == std::string::npos) return line;
  }
}

}  // namespace toplist::test
