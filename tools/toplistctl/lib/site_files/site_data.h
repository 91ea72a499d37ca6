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

/// The trades of the site in the working directory, for commands that change them.
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

/// Adds the two files to the change, if the import changes them.
void write_trades(SiteChange& change, const SiteTrades& before, const ImportedTrades& imported);

/// Reports the errors of a CSV file in order on standard error, twenty at most, and that nothing
/// was changed. Returns kExitFindings. `name` is the user's name for the file.
int refuse(Diagnostics errors, const std::string& name);

}  // namespace toplist::ctl
