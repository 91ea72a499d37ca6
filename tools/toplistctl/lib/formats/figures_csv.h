#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "run/trade_record.h"
#include "run/trade_row.h"
#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/diagnostics/error.h"
#include "toplistctl/lib/formats/changes.h"

/// The figures of a site's trades as CSV: a line for each trade and period, with the columns id,
/// period (60, 24, 07 or 99) and those of kFigures. A trade without a record in "d/t/sum" has no
/// lines of the recent periods, and one without a history none of period 99. Period 99 has no
/// further values, so they are 0.
namespace toplist::ctl {

/// The totals of a domain's history; nothing when there is none.
using Histories = std::function<Expected<std::optional<PeriodBlock>>(std::string_view domain)>;

/// The totals of a history of the site in the working directory.
Expected<std::optional<PeriodBlock>> read_history(std::string_view domain);

/// `sum` is the text of "d/t/sum". An error is that of a history.
Expected<std::string> export_figures(std::span<const TradeRecord> trades, std::string_view sum,
                                     const Histories& histories);

struct ImportedFigures {
  std::string sum;                                             ///< what "d/t/sum" is to hold
  std::vector<std::pair<std::string, PeriodBlock>> histories;  ///< that change: domain, totals
  std::vector<TradeChange> changes;                            ///< in the order of the trades
};

/// Puts the CSV's figures into the site with these trades, this text of "d/t/sum" and these
/// histories.
///
/// If the CSV has any line of a recent period, it replaces this period for all trades: those
/// without a line get 0. Unchanged are periods without any line, columns that the CSV does not
/// have, histories without a line, records of unknown ids, and unread fields of "d/t/sum". The
/// result is valid only without `errors`. An Error is one of reading a history.
Expected<ImportedFigures> import_figures(std::string_view csv, std::span<const TradeRecord> trades,
                                         std::string_view sum, const Histories& histories,
                                         Diagnostics& errors);

}  // namespace toplist::ctl
