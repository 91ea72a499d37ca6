#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "run/trade_record.h"
#include "run/trade_row.h"

namespace toplist {

inline constexpr const char* kExtraColumnsPath = "d/tl/tl.a1";
inline constexpr const char* kSumPath = "d/t/sum";

/// Fields of a record in a history file and in "d/t/sum". They are counted across line breaks, as
/// in all of a site's files (contract: fields-across-lines).
inline constexpr std::size_t kHistoryFields = 30;
inline constexpr std::size_t kSumFields = 44;

/// Where the history of the trade with this domain is.
std::string history_path(std::string_view domain);

/// One row per active trade, in database order, with its id, domain and url.
std::vector<TradeRow> build_rows(std::span<const TradeRecord> trades);

/// The fields of "d/tl/tl.a1" without a line feed, as views into its text, and how many of them
/// precede its first line feed. Nothing if there is no line feed.
struct ExtraColumnFields {
  std::vector<std::string_view> kept;
  std::optional<std::size_t> kept_in_header;

  /// Fields of a line after the header, including the domain. 0 if the header is too short for any
  /// column.
  [[nodiscard]] std::size_t group_size() const {
    return kept_in_header.value_or(0) < 3 ? 0 : *kept_in_header - 1;
  }
};
ExtraColumnFields read_extra_column_fields(std::string_view text);

/// Attaches the extra display columns of "d/tl/tl.a1" to the rows.
///
/// `text` is the file's text: fields separated by "|". A field that holds a line feed is dropped,
/// and the first such field ends the header line; that line's number of fields less one is n.
/// Each later line is a group of n fields: a domain and n - 1 column values, for every row of
/// exactly that domain. Nothing is attached without a line feed or with n below 2. An incomplete
/// last group is ignored. The rows keep views into `text`.
void attach_extra_columns(std::string_view text, std::span<TradeRow> rows);

/// Adds a trade's history, "d/h/<domain>.his", to its all-time block.
///
/// Records of 30 fields, counted across line breaks: 2 unused, the eight counters in file order,
/// 20 unused. Sums wrap at 32 bits.
void add_history(std::string_view text, PeriodBlock& all_time);

/// Stores the recent periods of all trades, "d/t/sum", and computes the percentages.
///
/// Records of 44 fields, counted across line breaks: 1 unused, the trade's id, and for each of the
/// periods 60, 24 and 07 the eight counters in file order, 3 unused, 3 further values. The first
/// row with the same text as its id gets the record. A record with an unknown id is skipped. Only
/// rows whose record was read to its end have percentages, also in the all-time block (contract:
/// sum-percentages).
void read_recent_periods(std::string_view text, std::span<TradeRow> rows);

}  // namespace toplist
