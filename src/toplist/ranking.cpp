#include "toplist/ranking.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace toplist {
namespace {

using Figure = std::int32_t (*)(const PeriodBlock&);

template <Counter counter>
std::int32_t counter_of(const PeriodBlock& block) {
  return block.*counter;
}

template <std::size_t i>
std::int32_t ratio_of(const PeriodBlock& block) {
  return percentage(block, kRatios[i]);
}

template <std::size_t i>
std::int32_t further_of(const PeriodBlock& block) {
  return block.further[i];
}

/// The kinds in the order of the order-by values. "ctg" comes before "ctt" here, although it comes
/// after it in a block. Meant: that is how the values have always been numbered.
constexpr std::array<Figure, 15> kKinds{
    counter_of<&PeriodBlock::rin>,
    counter_of<&PeriodBlock::uin>,
    counter_of<&PeriodBlock::out>,
    counter_of<&PeriodBlock::clk>,
    counter_of<&PeriodBlock::cef>,
    counter_of<&PeriodBlock::ctg>,
    counter_of<&PeriodBlock::ctt>,
    ratio_of<0>,  // clk per rin
    ratio_of<1>,  // cef per uin
    ratio_of<2>,  // cef per out
    ratio_of<3>,  // ctt per out
    ratio_of<4>,  // out per rin
    further_of<0>,
    further_of<1>,
    further_of<2>,
};

constexpr std::size_t kOrderValueCount = kPeriodCount * kKinds.size();
constexpr std::size_t kFallbackValue = 16;  ///< rin24
constexpr std::size_t kAscendingValue =
    57;  ///< out99 per rin99: the lowest comes first, on purpose.

/// 1 to 60. Only the exact decimal text counts, so "05" is none.
std::optional<std::size_t> exact_order_value(std::string_view order_by) {
  std::size_t value = 0;
  const char* end = order_by.data() + order_by.size();
  const auto parsed = std::from_chars(order_by.data(), end, value);
  const bool exact = parsed.ec == std::errc() && parsed.ptr == end && order_by.front() != '0';
  return exact && value <= kOrderValueCount ? std::optional(value) : std::nullopt;
}

std::size_t order_value(std::string_view order_by) {
  return exact_order_value(order_by).value_or(kFallbackValue);
}

std::int32_t figure(const TradeRow& row, std::size_t value) {
  return kKinds[(value - 1) % kKinds.size()](row.periods[(value - 1) / kKinds.size()]);
}

bool figure_before(std::int32_t a, std::int32_t b, std::size_t value) {
  return value == kAscendingValue ? a < b : a > b;
}

/// What is sorted in place of a row: its figure, computed once, and where the row stood.
struct SortEntry {
  std::int32_t figure;
  std::uint32_t position;
};

}  // namespace

bool is_order_value(std::string_view order_by) { return exact_order_value(order_by).has_value(); }

bool rowBefore(const TradeRow& a, const TradeRow& b) {
  const std::size_t value = order_value(a.order_key);
  return figure_before(figure(a, value), figure(b, value), value);
}

void rank_rows(std::vector<TradeRow*>& rows, const std::string& order_by) {
  const std::size_t value = order_value(order_by);
  std::vector<SortEntry> entries;
  entries.reserve(rows.size());
  for (TradeRow* row : rows) {
    row->order_key = order_by;
    entries.push_back({figure(*row, value), static_cast<std::uint32_t>(entries.size())});
  }
  std::sort(entries.begin(), entries.end(), [value](const SortEntry& a, const SortEntry& b) {
    return figure_before(a.figure, b.figure, value);
  });
  const std::vector<TradeRow*> before = rows;
  for (std::size_t i = 0; i < entries.size(); ++i) rows[i] = before[entries[i].position];
}

}  // namespace toplist
