#pragma once

#include <string_view>

/// The one place that writes to a terminal.
namespace toplist::ctl {

/// Exit statuses of the commands besides 0, "fine".
inline constexpr int kExitFindings = 1;
inline constexpr int kExitTrouble = 2;

/// Writes `text` to standard output: byte for byte, but to a terminal as printable_lines(). Returns
/// `status`, or kExitTrouble, told on standard error, when it cannot be written (a full disk). A
/// reader that went away, as "head" does, is no error.
int print(std::string_view text, int status = 0);

/// Tells on standard error what could not be done; returns kExitTrouble.
int fail(std::string_view what);

/// The same with what `error`, an errno, means.
int fail(std::string_view what, int error);

/// Tells something on standard error that does not end the work.
void warn(std::string_view what);

/// Keeps a reader that went away from ending the process. A handler, unlike an ignored signal, is
/// not inherited by commands that are run.
void survive_broken_pipes();

}  // namespace toplist::ctl
