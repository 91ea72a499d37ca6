// Definitions, settings, group files and the random alternatives; and the ranking against a sort of
// whole rows.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "input.h"
#include "support/rows.h"
#include "toplist/alternatives.h"
#include "toplist/definitions.h"
#include "toplist/filters.h"
#include "toplist/ranking.h"

namespace {

using toplist::TradeRow;
using toplist::fuzz::Input;
using toplist::fuzz::require;

/// Rows of few different figures, so that many are equal, each with its position as id.
std::vector<TradeRow> some_rows(Input& input) {
  std::vector<TradeRow> rows(input.integer<std::uint8_t>());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    rows[i].id = std::to_string(i);
    for (auto& block : rows[i].periods) {
      block.rin = input.integer<std::int8_t>() % 4;
      block.out = input.integer<std::int8_t>() % 4;
      block.further[2] = block.rin + block.out;
    }
  }
  return rows;
}

void check_ranking(std::vector<TradeRow> rows, const std::string& order_by) {
  auto ranking = toplist::test::pointers_to<TradeRow>(rows);
  toplist::rank_rows(rows, order_by, ranking);

  std::vector<TradeRow> sorted = rows;
  std::sort(sorted.begin(), sorted.end(), toplist::rowBefore);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    require(ranking[i]->id == sorted[i].id, "ranking differs from a sort of whole rows");
  }
}

void check_filters(const std::string& text, const std::vector<TradeRow>& rows) {
  toplist::ToplistFilters filters;
  for (const auto& setting : toplist::parse_settings(text)) {
    if (setting.key != "group") filters.apply(setting);  // a group would be read from a file
  }
  toplist::TextColumn members;
  toplist::parse_group(text, members);
  for (TradeRow row : rows) {
    row.mark = filters.admit(row) ? 1 : 0;
    require(row.mark == 0 || !filters.admit(row), "a trade without thumbnail was admitted");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  Input input(bytes, size);
  const std::string order_by(input.text(input.integer<std::uint8_t>() % 4));
  std::vector<TradeRow> rows = some_rows(input);
  check_ranking(rows, order_by);

  const std::string text(input.rest());
  for (const auto& definition : toplist::parse_definitions(text)) {
    check_ranking(rows, definition.order_by);
  }
  check_filters(text, rows);
  rows.resize(1);
  rows[0].extra_columns.assign(3, text);
  toplist::pick_alternatives(rows);
  return 0;
}
