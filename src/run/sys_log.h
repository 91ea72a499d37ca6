#pragma once

#include <string>
#include <string_view>

#include "util/file.h"

namespace toplist {

inline constexpr const char* kLogPath = "l/sys/sys.log";

/// Appends one line to "l/sys/sys.log", which the site's administration pages read:
///
///     |YYYYMMDDhhmm|module|code|subject|severity|detail|||
///
/// The time is local. All texts but `code` are cleaned by sanitize_log_field(). The file is opened,
/// appended to and closed for each line, and the line goes out in one write, so lines of several
/// threads or programs do not mix. When the log cannot be opened the line is lost silently.
void write_sys_log(std::string_view module, std::string_view code, std::string_view subject,
                   std::string_view severity, std::string_view detail);

/// Makes a text safe for the administration pages: line breaks go, and what HTML or a shell would
/// act upon becomes a numeric entity. The separator "|" and "&" stay, on purpose.
std::string sanitize_log_field(std::string_view text);

/// The text that sanitize_log_field() made `field` of, but for its line breaks.
std::string restore_log_field(std::string_view field);

/// What becomes of the run after a failure.
enum class Severity { run_goes_on, run_ends };

/// Logs that the file at `path` cannot be opened.
void log_unopened_file(std::string_view path, Severity severity);

/// Reads the file at `path` into `file`; false, logged, when it cannot be opened.
bool read_or_log(const std::string& path, Severity severity, FileBuffer& file);

/// Logs an error in the data.
void log_content_error(std::string_view message, Severity severity);

/// Writes an HTML error fragment about a directory that cannot be opened to standard output.
///
/// `link` is the address of a page to go on to, or empty. The CGI header and the opening document
/// tags come only with `with_header` 1; the closing tags always do, on purpose: the page around
/// the fragment has been opened by whoever includes it. Texts pass into the page unescaped.
void write_dir_error_page(const std::string& directory, const std::string& link, int with_header);

}  // namespace toplist
