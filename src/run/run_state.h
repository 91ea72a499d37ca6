#pragma once

#include <vector>

#include "harvest/harvest_config.h"
#include "run/trade_record.h"
#include "run/trade_row.h"
#include "toplist/definitions.h"
#include "util/file.h"

namespace toplist {

/// Everything that a run keeps in memory. Its steps fill it. If a file could not be read, its part
/// is empty.
struct RunState {
  RunState() = default;
  RunState(const RunState&) = delete;  // rows and settings are views into the files' texts
  RunState& operator=(const RunState&) = delete;

  std::vector<TradeRecord> trades;  ///< "d/t/index", in file order
  HarvestConfig config;             ///< "d/tl/vantaig", padded with "0"

  std::vector<TradeRow> rows;      ///< of the active trades, in the trades' order
  std::vector<TradeRow*> ranking;  ///< all rows, in the order of the last ranking
  FileBuffer columns_file;         ///< "d/tl/tl.a1", which the rows' extra columns view

  std::vector<ToplistDefinition> definitions;  ///< "d/tl/tl", in file order
  FileBuffer settings_file;                    ///< "d/tl/tl.ext", which the settings view
  std::vector<ToplistSetting> settings;
};

}  // namespace toplist
