#include "run/run_driver.h"

#include <span>
#include <string>
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

constexpr const char* kTradesPath = "d/t/index";
constexpr const char* kExtraColumnsPath = "d/tl/tl.a1";
constexpr const char* kSumPath = "d/t/sum";

/// A database of fewer trades counts as not fully loaded, on purpose.
constexpr std::size_t kFewestTrades = 10;

/// Reads a file that the run cannot do without; false, logged, when it cannot be opened.
bool read_required(const char* path, FileBuffer& file) {
  if (file.read(path)) return true;
  log_unopened_file(path, Severity::run_ends);
  return false;
}

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
    const std::string path = "d/h/" + row.domain + ".his";
    if (history.read(path)) {
      add_history(history.text(), row.periods[kPeriod99]);
    } else {
      log_unopened_file(path, Severity::run_goes_on);
    }
  }
}

/// Builds the rows and fills in their figures; false when the run ends here. `extra_columns` holds
/// what the rows view.
bool build_statistics(std::span<const TradeRecord> trades, FileBuffer& extra_columns,
                      std::vector<TradeRow>& rows) {
  rows = build_rows(trades);
  if (!read_required(kExtraColumnsPath, extra_columns)) return false;
  attach_extra_columns(extra_columns.text(), rows);
  if (rows.empty()) return false;  // a site without active trades is no failure: nothing is logged

  add_histories(rows);
  FileBuffer sum;
  if (!read_required(kSumPath, sum)) return false;
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
  if (!read_required(kHarvestConfigPath, config_file)) return;
  const HarvestConfig config = parse_harvest_config(config_file.text(), "0");
  if (config.harvest_enabled()) harvest_thumbnails(trades);

  FileBuffer extra_columns;
  std::vector<TradeRow> rows;
  if (!build_statistics(trades, extra_columns, rows)) return;
  build_toplists(rows, config);
}

}  // namespace toplist
