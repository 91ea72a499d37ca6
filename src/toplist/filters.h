#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "run/trade_row.h"
#include "toplist/definitions.h"
#include "util/text_column.h"

namespace toplist {

inline constexpr std::size_t kMinimumCount = 14;
inline constexpr std::int32_t kMinimumOff = -1;

/// Which ranked rows one toplist shows. Fresh filters admit every row.
class ToplistFilters {
 public:
  ToplistFilters();

  /// Applies one setting of "d/tl/tl.ext". Keys:
  /// - a minimum ("rin60" ... "ctg24", "cprod", "tprod"): a number; -1 switches it off, and the
  ///   last one given wins.
  /// - "domains", "skipdomains": domains separated by "," or line breaks, in a value of at least 4
  ///   characters; items below 3 characters are dropped.
  /// - "group": the name of a file "d/gr/<name>" (see parse_group()); empty or "*" restricts
  ///   nothing. One that cannot be opened is logged and restricts nothing.
  /// Lists accumulate over settings. Unknown keys are ignored.
  void apply(const ToplistSetting& setting);

  /// Whether the toplist shows the row. Rows with a `mark` count as skipped domains.
  [[nodiscard]] bool admit(const TradeRow& row) const;

 private:
  void add_group(std::string name);
  [[nodiscard]] bool reaches_minimums(const TradeRow& row) const;

  std::array<std::int32_t, kMinimumCount> minimums_;
  TextColumn domains_;
  TextColumn skipped_domains_;
  TextColumn members_;  ///< Trade ids as decimal text.
};

/// The filters of the toplist with this template path, from all settings of "d/tl/tl.ext".
ToplistFilters filters_of(std::string_view template_path, std::span<const ToplistSetting> settings);

/// Appends the members of a group to `members`. A group file holds fields separated by "|", 13 to a
/// record, counted across line breaks; field 1 is the trade's id. The first record is a header.
void parse_group(std::string_view text, TextColumn& members);

/// Marks the rows whose `domain` + ".jpg" is no entry of the thumbnail directory and unmarks the
/// others; false when the directory cannot be opened.
bool mark_rows_without_thumbnail(const std::string& directory, std::span<TradeRow> rows);

}  // namespace toplist
