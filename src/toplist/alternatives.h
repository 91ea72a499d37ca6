#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "run/trade_row.h"

namespace toplist {

/// Replaces each extra column by one of its alternatives, the pieces between its semicolons. A
/// final semicolon adds no empty piece.
///
/// Each pick is the first number that the C library's generator draws when it is seeded with the
/// current second. So all picks of one second take the same position in lists of equal length, and
/// the columns of a trade match (contract: same-second).
void pick_alternatives(std::span<TradeRow> rows);

/// The same in a second whose first number is `drawn`.
void pick_alternatives(std::span<TradeRow> rows, std::size_t drawn);

/// How many alternatives an extra column has, 1 or more.
std::size_t alternative_count(std::string_view column);

}  // namespace toplist
