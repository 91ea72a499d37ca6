#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "run/trade_row.h"

namespace toplist {

/// A toplist's rows in rank order; rank 0 is the first.
using RankedRows = std::span<const TradeRow* const>;

/// Characters of a rank in a tag, and how many ranks they can name: 0 to 999.
inline constexpr std::size_t kRankDigits = 3;
inline constexpr std::size_t kRankCount = 1000;

/// What opens a tag and closes it.
inline constexpr std::string_view kTagMark = "%%";

/// "%%" name(3) separator(1) rank(3) "%%", such as %%tid_000%%
inline constexpr std::size_t kShortTagLength = 11;
/// "%%" name(5) separator(1) rank(3) "%%", such as %%rin60_004%%
inline constexpr std::size_t kLongTagLength = 13;

/// One tag as read from a template. The separator may be any character.
struct Tag {
  std::string_view name;      ///< 3 or 5 characters.
  std::int32_t rank = -1;     ///< Counts from 0.
  std::int32_t column = -1;   ///< Of a long tag "attNN": NN.
  bool closes_short = false;  ///< There is a "%%" where a short tag would end.
};

/// Reads the tag at the start of `text`, which begins with "%%" and has at least kShortTagLength
/// characters. Nothing for a malformed tag, which ends neither as a short nor as a long one.
///
/// If both ends fit, as in a short tag directly before another "%%", it is a long tag
/// (contract: long-wins).
std::optional<Tag> read_tag(std::string_view text);

/// Whether the tag's name is one that shows a value.
bool has_known_name(const Tag& tag);

/// The entry of the extra columns that a column tag ("att...") shows, negative ones included;
/// nothing for other tags.
std::optional<std::int64_t> column_entry(const Tag& tag);

/// Appends the tag's value to `value` and returns how many characters of the template it replaces.
/// Fewer may be left on the line; then all of them are replaced.
///
/// A rank beyond the rows gives a blank, an unknown name nothing. Values are neither escaped nor
/// encoded.
std::size_t expand_tag(const Tag& tag, RankedRows rows, std::string& value);

}  // namespace toplist
