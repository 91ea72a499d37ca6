#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "run/trade_row.h"

namespace toplist {

/// Whether the value is one of "1" to "60", in just that spelling.
bool is_order_value(std::string_view order_by);

/// Whether row `a` ranks before row `b`: the greater figure first, but with "57" (out99 per rin99)
/// the smaller one. Uses the order-by value of `a`.
///
/// Values "1" to "60" are four periods (60, 24, 07, 99) of fifteen kinds: rin, uin, out, clk, cef,
/// ctg, ctt, the five ratios, the three further values. Any other text ranks by rin24.
///
/// A run does not call this: rank_rows() computes each row's figure once. This function defines the
/// order that rank_rows() must give, and the tests compare both.
bool rowBefore(const TradeRow& a, const TradeRow& b);

/// The row's figure by which the order-by value ranks.
std::int32_t order_figure(const TradeRow& row, std::string_view order_by);

/// Ranks the rows: sets their `order_key` and sorts `ranking`, which points to each of them once.
/// The result is that of std::sort with rowBefore(), from the same initial order. The sort is not
/// stable, so the order of equal rows depends on the initial one. Pages rely on exactly this order
/// (contract: tie-order).
void rank_rows(std::span<TradeRow> rows, const std::string& order_by,
               std::vector<TradeRow*>& ranking);

}  // namespace toplist
