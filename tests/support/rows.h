#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "run/trade_row.h"

namespace toplist::test {

/// The counter that is called by a name such as "rin60", spelled out apart from the program's own
/// tables; nullptr when no counter is.
inline std::int32_t* find_counter(TradeRow& row, std::string_view name) {
  static const std::map<std::string_view, Counter> kCounters = {
      {"rin", &PeriodBlock::rin}, {"uin", &PeriodBlock::uin}, {"out", &PeriodBlock::out},
      {"clk", &PeriodBlock::clk}, {"cef", &PeriodBlock::cef}, {"ctt", &PeriodBlock::ctt},
      {"ctg", &PeriodBlock::ctg}, {"rec", &PeriodBlock::rec}};
  static const std::map<std::string_view, std::size_t> kPeriods = {
      {"60", 0}, {"24", 1}, {"07", 2}, {"99", 3}};
  if (name.size() != 5) return nullptr;
  const auto counter = kCounters.find(name.substr(0, 3));
  const auto period = kPeriods.find(name.substr(3));
  if (counter == kCounters.end() || period == kPeriods.end()) return nullptr;
  return &(row.periods[period->second].*counter->second);
}

inline TradeRow make_row(std::string id, std::string domain = "") {
  TradeRow row;
  row.id = std::move(id);
  row.domain = std::move(domain);
  return row;
}

template <typename Row>
std::vector<Row*> pointers_to(std::vector<TradeRow>& rows) {
  std::vector<Row*> pointers;
  pointers.reserve(rows.size());
  for (TradeRow& row : rows) pointers.push_back(&row);
  return pointers;
}

}  // namespace toplist::test
