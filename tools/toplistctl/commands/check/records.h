#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace toplist::ctl {

/// Where a file departs from one record per line.
struct Misfit {
  std::size_t line;    ///< from 1
  std::size_t fields;  ///< how many fields end on that line
};

/// Where line breaks may stand in a file of records.
enum class LineBreaks {
  between_records,  ///< in the first field of a record only
  anywhere,
};

/// The first line of a file of "|"-separated fields whose fields do not come in records of `size`:
/// a line that breaks a record, or the last line when it leaves one incomplete. Line breaks and
/// blanks at the file's end do not count.
std::optional<Misfit> find_misfit(std::string_view text, std::size_t size,
                                  LineBreaks breaks = LineBreaks::between_records);

/// The text without the line breaks and blanks at its end.
std::string_view without_end_blanks(std::string_view text);

}  // namespace toplist::ctl
