// Definitions, settings, group files and the random alternatives, from the same text.

#include <cstdint>
#include <string>
#include <vector>

#include "input.h"
#include "toplist/alternatives.h"
#include "toplist/definitions.h"
#include "toplist/filters.h"

namespace {

void check_filters(const std::string& text) {
  toplist::ToplistFilters filters;
  for (const auto& setting : toplist::parse_settings(text)) {
    if (setting.key != "group") filters.apply(setting);  // a group would be read from a file
  }
  toplist::TradeRow row;
  row.mark = filters.admit(row) ? 1 : 0;
  toplist::fuzz::require(row.mark == 0 || !filters.admit(row), "admitted without a thumbnail");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text(toplist::fuzz::Input(bytes, size).rest());
  (void)toplist::parse_definitions(text);
  check_filters(text);
  toplist::TextColumn members;
  toplist::parse_group(text, members);
  std::vector<toplist::TradeRow> rows(1);
  rows[0].extra_columns.assign(3, text);
  toplist::pick_alternatives(rows);
  return 0;
}
