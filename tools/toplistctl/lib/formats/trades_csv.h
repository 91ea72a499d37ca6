#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "run/trade_record.h"
#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/formats/changes.h"

/// The trades of a site as CSV: "id,domain,url,status" and the extra columns, title to att99. A
/// line for each record of "d/t/index", in the order of the file.
namespace toplist::ctl {

/// `columns` is the text of "d/tl/tl.a1". The number of extra columns is that of the trade with
/// most of them, or of the file's header. Alternatives stay as in the file.
std::string export_trades(std::span<const TradeRecord> trades, std::string_view columns);

/// How to treat HTML in new texts.
enum class Markup {
  refuse,  ///< it is an error
  escape,  ///< "&", "<", ">" and quotes become entities, in the extra columns
  raw,     ///< texts are taken as they are, also those that are not UTF-8
};

struct TradesImport {
  Markup markup = Markup::refuse;
  bool remove_missing = false;  ///< trades that the CSV does not list go
  /// A domain that no trade has afterwards: its line goes from "d/tl/tl.a1".
  std::string_view left_domain = {};
};

struct ImportedTrades {
  std::vector<TradeRecord> trades;   ///< what "d/t/index" is to hold,
  std::string columns;               ///< and "d/tl/tl.a1"
  std::vector<TradeChange> changes;  ///< in the order of the lines, then those removed
  std::size_t unchanged = 0;         ///< trades that stay as they are
  std::size_t fillers = 0;           ///< new records of no trade, up to the fewest a run takes
};

/// Puts the CSV's lines into the site that holds `trades` and the text `columns`.
///
/// Records keep their places, and new ones follow in the order of the lines. Bytes of a record that
/// the CSV does not change stay, and so do columns that it does not have. In a new record,
/// everything else has its default. Only texts that change are checked. The result is valid only
/// without errors.
ImportedTrades import_trades(std::string_view csv, std::span<const TradeRecord> trades,
                             std::string_view columns, Diagnostics& errors,
                             const TradesImport& how = {});

}  // namespace toplist::ctl
