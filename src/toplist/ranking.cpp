#include "toplist/ranking.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace toplist {
namespace {

constexpr std::size_t kOrderValueCount = kPeriodCount * kOrderKinds.size();
constexpr std::size_t kFallbackValue = 16;  ///< rin24
constexpr std::size_t kAscendingValue =
    57;  ///< out99 per rin99: the lowest comes first (contract: ascending-57).

/// 1 to 60. Only the exact decimal text counts, so "05" is not one of them.
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

/// What an order-by value ranks by.
struct RankKey {
  explicit RankKey(std::string_view order_by) {
    const std::size_t value = order_value(order_by);
    figure = kOrderKinds[(value - 1) % kOrderKinds.size()].figure;
    period = (value - 1) / kOrderKinds.size();
    flip = value == kAscendingValue ? -1 : 0;
  }

  [[nodiscard]] std::int32_t figure_of(const TradeRow& row) const {
    return figure(row.periods[period]);
  }

  /// The greater key ranks first. If the lowest figure should, its bits are flipped.
  [[nodiscard]] std::int32_t of(const TradeRow& row) const { return figure_of(row) ^ flip; }

  std::int32_t (*figure)(const PeriodBlock&);
  std::size_t period;
  std::int32_t flip;
};

/// What is sorted in place of a row: its key, computed once, and its position in the row set.
struct SortEntry {
  std::int32_t key;
  std::uint32_t position;
};

}  // namespace

bool is_order_value(std::string_view order_by) { return exact_order_value(order_by).has_value(); }

bool rowBefore(const TradeRow& a, const TradeRow& b) {
  const RankKey key(a.order_key);
  return key.of(a) > key.of(b);
}

std::int32_t order_figure(const TradeRow& row, std::string_view order_by) {
  return RankKey(order_by).figure_of(row);
}

void rank_rows(std::span<TradeRow> rows, const std::string& order_by,
               std::vector<TradeRow*>& ranking) {
  const RankKey key(order_by);
  // Row by row in memory order: in rank order each row would be a cache miss.
  std::vector<std::int32_t> keys(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    rows[i].order_key = order_by;
    keys[i] = key.of(rows[i]);
  }
  std::vector<SortEntry> entries(ranking.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const auto position = static_cast<std::uint32_t>(ranking[i] - rows.data());
    entries[i] = {keys[position], position};
  }
  std::sort(entries.begin(), entries.end(),
            [](const SortEntry& a, const SortEntry& b) { return a.key > b.key; });
  for (std::size_t i = 0; i < entries.size(); ++i) ranking[i] = &rows[entries[i].position];
}

}  // namespace toplist
