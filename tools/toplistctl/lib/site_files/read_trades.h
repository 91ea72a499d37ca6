#pragma once

#include <string_view>
#include <vector>

#include "run/trade_record.h"
#include "toplistctl/lib/diagnostics/error.h"

namespace toplist::ctl {

/// The records of "d/t/index" in the working directory, as load_trades() gives them; an error if
/// the file cannot be read as read_file() reads it.
Expected<std::vector<TradeRecord>> read_trades();

/// Whether `name` is the trade's domain or, in the digits of a plain number, its id.
bool is_called(const TradeRecord& trade, std::string_view name);

}  // namespace toplist::ctl
