#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "run/trade_record.h"
#include "toplistctl/lib/formats/csv_errors.h"

/// The trades of a site as CSV: "id,domain,url,status" and the extra columns, title to att99. A
/// line for each record of "d/t/index", in the order of the file.
namespace toplist::ctl {

/// `columns` is the text of "d/tl/tl.a1". There are as many extra columns as the trade with most of
/// them has, or the file's header; alternatives are given as they stand.
std::string export_trades(std::span<const TradeRecord> trades, std::string_view columns);

struct ImportedTrades {
  std::vector<TradeRecord> trades;  ///< what "d/t/index" is to hold,
  std::string columns;              ///< and "d/tl/tl.a1"
  std::size_t added = 0;            ///< trades whose id is new
  std::size_t removed = 0;          ///< trades whose id is not in the CSV
  std::size_t fillers = 0;          ///< records of no trade, up to the fewest that a run takes
};

/// Makes the CSV's lines the trades of the site that holds `trades` and the text `columns`.
///
/// Records come in the order of the lines. Of an id that stays all bytes stay which the CSV does
/// not change, and a column that the CSV does not have keeps what stands; in the record of a new id
/// everything not given has its default. The result only counts while there are no errors.
ImportedTrades import_trades(std::string_view csv, std::span<const TradeRecord> trades,
                             std::string_view columns, CsvErrors& errors);

}  // namespace toplist::ctl
