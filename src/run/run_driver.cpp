#include "run/run_driver.h"

#include <span>
#include <vector>

#include "harvest/harvest.h"
#include "harvest/harvest_config.h"
#include "run/statistics.h"
#include "run/sys_log.h"
#include "run/trade_record.h"
#include "run/trade_row.h"
#include "toplist/toplist_stage.h"
#include "util/file.h"

namespace toplist {
namespace {

bool load_all_trades(std::vector<TradeRecord>& trades) {
  if (!load_trades(kTradesPath, trades)) {
    log_unopened_file(kTradesPath, Severity::run_ends);
    return false;
  }
  if (trades.size() < kFewestTrades) {
    log_content_error("database was not fully loaded", Severity::run_ends);
    return false;
  }
  return true;
}

void add_histories(std::span<TradeRow> rows) {
  FileBuffer history;
  for (TradeRow& row : rows) {
    if (!read_or_log(history_path(row.domain), Severity::run_goes_on, history)) continue;
    add_history(history.text(), row.periods[kPeriod99]);
  }
}

/// Builds the rows and fills in their figures; false when the run ends here. `extra_columns` holds
/// what the rows view.
bool build_statistics(std::span<const TradeRecord> trades, FileBuffer& extra_columns,
                      std::vector<TradeRow>& rows) {
  rows = build_rows(trades);
  if (!read_or_log(kExtraColumnsPath, Severity::run_ends, extra_columns)) return false;
  attach_extra_columns(extra_columns.text(), rows);
  if (rows.empty()) return false;  // a site without active trades is no failure: nothing is logged

  add_histories(rows);
  FileBuffer sum;
  if (!read_or_log(kSumPath, Severity::run_ends, sum)) return false;
  read_recent_periods(sum.text(), rows);
  if (rows.empty()) {  // no row goes away meanwhile: the last guard before pages are written
    log_content_error("no toplist entries found", Severity::run_ends);
    return false;
  }
  return true;
}

}  // namespace

void run_driver() {
  std::vector<TradeRecord> trades;
  if (!load_all_trades(trades)) return;

  FileBuffer config_file;
  if (!read_or_log(kHarvestConfigPath, Severity::run_ends, config_file)) return;
  const HarvestConfig config = parse_harvest_config(config_file.text(), "0");
  if (config.harvest_enabled()) harvest_thumbnails(trades);

  FileBuffer extra_columns;
  std::vector<TradeRow> rows;
  if (!build_statistics(trades, extra_columns, rows)) return;
  build_toplists(rows, config);
}

}  // namespace toplist
