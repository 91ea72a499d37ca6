#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "run/trade_row.h"
#include "toplist/definitions.h"
#include "util/text_column.h"

namespace toplist {

/// The value of a minimum that switches it off.
inline constexpr std::int32_t kMinimumOff = -1;

/// Fields of a record in a group file, see parse_group().
inline constexpr std::size_t kGroupFields = 13;

/// The keys of settings that are not minimums.
inline constexpr std::string_view kDomainsKey = "domains";
inline constexpr std::string_view kSkippedDomainsKey = "skipdomains";
inline constexpr std::string_view kGroupKey = "group";

/// Whether ToplistFilters::apply() knows the key of a setting, and whether a minimum has this key.
bool is_setting_key(std::string_view key);
bool is_minimum_key(std::string_view key);

/// A minimum that a toplist can set: its key, and the figure of a row that it is for.
struct Minimum {
  std::string_view key;
  std::int32_t (*figure)(const TradeRow&);
};

/// The file that a value of "group" names. Only "*" and an empty value name none. A value of blanks
/// names the folder of the groups.
std::optional<std::string> group_path(std::string_view value);

/// What ToplistFilters::dropped_by() says of a row that has no thumbnail but needs one.
inline constexpr std::string_view kThumbnailFilter = "thumbnail";

/// A test that a row fails.
struct Drop {
  std::string_view filter;             ///< The setting's key, or kThumbnailFilter: static text.
  std::int32_t figure = 0;             ///< The row's, if the filter is a minimum,
  std::int32_t minimum = kMinimumOff;  ///< and that minimum; otherwise kMinimumOff.
};

/// Which ranked rows one toplist shows. New filters admit every row.
class ToplistFilters {
 public:
  /// Applies one setting of "d/tl/tl.ext". Keys:
  /// - a minimum ("rin60" ... "ctg24", "cprod", "tprod"): a number; -1 switches it off, and the
  ///   last one given wins.
  /// - "domains", "skipdomains": domains separated by "," or line breaks, in a value of at least 4
  ///   characters; items below 3 characters are dropped.
  /// - "group": the name of a file "d/gr/<name>" (see parse_group()); empty or "*" restricts
  ///   nothing. One that cannot be opened restricts nothing either, see unopened_groups().
  /// Lists accumulate over settings. Unknown keys are ignored.
  void apply(const ToplistSetting& setting);

  /// Whether the toplist shows the row. Rows with a `mark` count as skipped domains.
  [[nodiscard]] bool admit(const TradeRow& row) const { return dropped_by(row).empty(); }

  /// The key of the first setting that keeps the row from being shown, or kThumbnailFilter; empty
  /// when nothing does. A view of static text.
  [[nodiscard]] std::string_view dropped_by(const TradeRow& row) const;

  /// Everything that keeps the row from being shown, in the order of the tests.
  [[nodiscard]] std::vector<Drop> drops(const TradeRow& row) const;

  /// Paths of the groups that could not be opened, in the order of the settings.
  [[nodiscard]] const std::vector<std::string>& unopened_groups() const { return unopened_groups_; }

 private:
  /// What a row's figure must reach.
  struct MinimumInForce {
    const Minimum* minimum;
    std::int32_t least;
  };

  void set_minimum(const Minimum& minimum, std::int32_t least);
  void add_group(std::string_view value);
  /// Calls `visit` with each Drop of the row, in the order of the tests, while it returns true.
  template <typename Visit>
  void visit_drops(const TradeRow& row, Visit visit) const;

  std::vector<MinimumInForce> minimums_;  ///< Mostly one at most, in the keys' order.
  TextColumn domains_;
  TextColumn skipped_domains_;
  TextColumn members_;  ///< Trade ids as decimal text.
  std::vector<std::string> unopened_groups_;
};

/// The filters of the toplist with this template path, from all settings of "d/tl/tl.ext".
ToplistFilters filters_of(std::string_view template_path, std::span<const ToplistSetting> settings);

/// Appends the items of a "domains" or "skipdomains" value to `domains`.
void parse_domains(std::string value, TextColumn& domains);

/// Appends the members of a group to `members`. A group file holds fields separated by "|", 13 to a
/// record, counted across line breaks; field 1 is the trade's id. The first record is a header.
void parse_group(std::string_view text, TextColumn& members);

/// Marks the rows whose `domain` + ".jpg" is no entry of the thumbnail directory and unmarks the
/// others; false when the directory cannot be opened.
bool mark_rows_without_thumbnail(const std::string& directory, std::span<TradeRow> rows);

}  // namespace toplist
