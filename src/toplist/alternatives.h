#pragma once

#include <span>

#include "run/trade_row.h"

namespace toplist {

/// Replaces each extra column by one of its alternatives, the pieces between its semicolons. A
/// final semicolon adds no empty piece.
///
/// Each pick is the first number that the C library's generator draws when it is seeded with the
/// current second. So all picks of one second take the same position in lists of equal length, and
/// the columns of a trade match (contract: same-second).
void pick_alternatives(std::span<TradeRow> rows);

}  // namespace toplist
