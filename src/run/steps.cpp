#include "run/steps.h"

#include <cstdint>
#include <string>

#include "run/statistics.h"
#include "toplist/alternatives.h"
#include "toplist/filters.h"
#include "toplist/toplist_stage.h"
#include "util/file.h"
#include "util/number.h"

namespace toplist {
namespace {

/// Reads a file that a run needs. If it cannot be opened, reports that and returns false.
bool read_needed(const char* path, FileBuffer& file, Outcomes& outcomes) {
  if (file.read(path)) return true;
  outcomes.log(unopened_file(path, Severity::run_ends));
  return false;
}

/// Always false: no value is both below 1 and above 60. This is on purpose, so any order-by value
/// is accepted (contract: unchecked-order).
bool is_incorrect_order(const std::string& order_by) {
  const std::int32_t value = parse_int32(order_by);
  const bool is_below = value < 1;
  const bool is_above = value > 60;
  return is_below && is_above;
}

}  // namespace

bool load_trade_set(RunState& run, Outcomes& outcomes) {
  if (!load_trades(kTradesPath, run.trades)) {
    outcomes.log(unopened_file(kTradesPath, Severity::run_ends));
    return false;
  }
  if (run.trades.size() >= kFewestTrades) return true;
  outcomes.log(content_error("database was not fully loaded"));
  return false;
}

bool read_configuration(RunState& run, Outcomes& outcomes) {
  FileBuffer file;
  const bool opened = read_needed(kHarvestConfigPath, file, outcomes);
  run.config = parse_harvest_config(file.text(), "0");
  return opened;
}

bool harvest_if_enabled(RunState& run, Outcomes& outcomes) {
  if (run.config.harvest_enabled()) outcomes.harvest(run.trades);
  return true;
}

bool build_row_set(RunState& run, Outcomes& outcomes) {
  run.rows = build_rows(run.trades);
  run.ranking.clear();
  run.ranking.reserve(run.rows.size());
  for (TradeRow& row : run.rows) run.ranking.push_back(&row);

  if (!read_needed(kExtraColumnsPath, run.columns_file, outcomes)) return false;
  attach_extra_columns(run.columns_file.text(), run.rows);
  return !run.rows.empty();
}

bool add_histories(RunState& run, Outcomes& outcomes) {
  FileBuffer history;
  for (TradeRow& row : run.rows) {
    const std::string path = history_path(row.domain);
    if (history.read(path)) {
      add_history(history.text(), row.periods[kPeriod99]);
    } else {
      outcomes.log(unopened_file(path, Severity::run_goes_on));
    }
  }
  return true;
}

bool read_recent_figures(RunState& run, Outcomes& outcomes) {
  FileBuffer sum;
  if (!read_needed(kSumPath, sum, outcomes)) return false;
  read_recent_periods(sum.text(), run.rows);
  if (!run.rows.empty()) return true;
  // The last check before pages are written: rows never disappear during a run.
  outcomes.log(content_error("no toplist entries found"));
  return false;
}

bool read_definitions(RunState& run, Outcomes& outcomes) {
  FileBuffer file;
  if (!read_needed(kDefinitionsPath, file, outcomes)) return false;
  run.definitions = parse_definitions(file.text());
  for (const ToplistDefinition& definition : run.definitions) {
    if (is_incorrect_order(definition.order_by)) {
      outcomes.log(content_error("incorrect order-by value found"));
    }
  }
  return !run.definitions.empty();
}

bool pick_columns(RunState& run, Outcomes& /*outcomes*/) {
  pick_alternatives(run.rows);
  return true;
}

bool read_settings(RunState& run, Outcomes& outcomes) {
  if (!read_needed(kSettingsPath, run.settings_file, outcomes)) return false;
  run.settings = parse_settings(run.settings_file.text());
  return true;
}

bool mark_missing_thumbnails(RunState& run, Outcomes& outcomes) {
  if (!run.config.thumbnails_required()) return true;
  if (mark_rows_without_thumbnail(run.config.thumb_dir(), run.rows)) return true;
  outcomes.unopened_folder(run.config.thumb_dir());
  return false;
}

void carry_out(RunState& run, Outcomes& outcomes) {
  for (const Step step : kSteps) {
    if (!step(run, outcomes)) return;
  }
  for (const ToplistDefinition& definition : run.definitions) {
    if (!build_toplist(run, definition, outcomes)) return;
  }
}

}  // namespace toplist
