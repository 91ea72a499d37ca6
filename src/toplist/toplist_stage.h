#pragma once

#include <span>

#include "harvest/harvest_config.h"
#include "run/trade_row.h"

namespace toplist {

/// Writes every toplist that "d/tl/tl" defines, in file order, from the rows. Picks the random
/// alternatives of the rows' extra columns on the way. A missing file ends the stage, logged.
///
/// Throws std::out_of_range as render_toplist() does.
void build_toplists(std::span<TradeRow> rows, const HarvestConfig& config);

}  // namespace toplist
