#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "run/trade_record.h"
#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/diagnostics/error.h"
#include "toplistctl/lib/formats/trades_csv.h"
#include "toplistctl/lib/site_files/site_change.h"

/// The trades of the site in the working directory, read to be changed.
namespace toplist::ctl {

/// The records of "d/t/index"; an error if there is no such file.
Expected<std::vector<TradeRecord>> read_trades();

/// The same; none when there is no such file.
Expected<std::vector<TradeRecord>> read_trades_if_there();

/// Whether `name` is the trade's domain or, in the digits of a plain number, its id.
bool is_called(const TradeRecord& trade, std::string_view name);

struct SiteTrades {
  std::vector<TradeRecord> trades;     ///< "d/t/index"
  std::optional<std::string> columns;  ///< the text of "d/tl/tl.a1", if it is there
};
Expected<SiteTrades> read_site_trades();

/// Notes the two files, as far as the import changes them.
void write_trades(SiteChange& change, const SiteTrades& before, const ImportedTrades& imported);

/// Reports what is wrong with a CSV file in its order, twenty errors at most, and that nothing was
/// changed, on standard error. Returns kExitFindings. `name` is what the user calls the file.
int refuse(Diagnostics errors, const std::string& name);

}  // namespace toplist::ctl
