#pragma once

#include <fmt/core.h>

#include <string>
#include <string_view>
#include <utility>

/// The one place that writes to a terminal.
namespace toplist::ctl {

/// Exit statuses of the commands other than 0, "fine".
inline constexpr int kExitFindings = 1;
inline constexpr int kExitTrouble = 2;

/// Writes `text` to standard output: byte for byte, but to a terminal as printable_lines(). Returns
/// `status`, or reports that it cannot be written (a full disk) and returns kExitTrouble. A reader
/// that has gone, as "head" does, is no error.
int print(std::string_view text, int status = 0);

/// Reports on standard error what failed; returns kExitTrouble.
int fail(std::string_view what);

/// The same with the system's reason, an errno.
int fail(std::string_view what, int error);

/// Reports something on standard error that does not end the work.
void warn(std::string_view what);

/// Makes a write to a reader that has gone, or beyond a limit of file sizes, an error like a full
/// disk instead of the end of the process. A handler, unlike an ignored signal, is not inherited by
/// commands that are run.
void survive_failed_writes();

/// The text with "?" in place of each control character, including those that take two bytes of
/// UTF-8 (U+0080 to U+009F), because a terminal may act on them.
std::string printable(std::string_view text);

/// The same for text of many lines: line feeds and tabs stay.
std::string printable_lines(std::string_view text);

/// The result of fmt::format(), as one printable line.
template <typename... Values>
std::string printable_line(fmt::format_string<Values...> format, Values&&... values) {
  return printable(fmt::format(format, std::forward<Values>(values)...)) + '\n';
}

}  // namespace toplist::ctl
