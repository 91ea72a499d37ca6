#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace toplist {

inline constexpr const char* kLogFolder = "l/sys";
inline constexpr const char* kLogPath = "l/sys/sys.log";

/// Fields of a log line, including the empty ones before the time and after the detail.
inline constexpr std::size_t kLogFields = 9;

/// Appends one line to "l/sys/sys.log", which the site's administration pages read:
///
///     |YYYYMMDDhhmm|module|code|subject|severity|detail|||
///
/// The time is local. All texts but `code` are cleaned by sanitize_log_field(). The file is opened,
/// appended to and closed for each line, and the line goes out in one write, so lines of several
/// threads or programs do not mix. If the log cannot be opened, the line is lost.
void write_sys_log(std::string_view module, std::string_view code, std::string_view subject,
                   std::string_view severity, std::string_view detail);

/// Makes a text safe for the administration pages: removes line breaks, and turns characters that
/// are special in HTML or a shell into numeric entities. The separator "|" and "&" stay
/// (contract: raw-log-code).
std::string sanitize_log_field(std::string_view text);

/// The text from which sanitize_log_field() made `field`, without its line breaks.
std::string restore_log_field(std::string_view field);

/// Whether the run ends after a failure.
enum class Severity { run_goes_on, run_ends };

/// A log line's names for the program, the kind of failure and its severity.
inline constexpr const char* kLogModule = "toplist";
inline constexpr const char* kUnopenedFileCode = "1";
inline constexpr const char* kContentErrorCode = "10";
const char* severity_text(Severity severity);

/// Something that went wrong in a run.
struct Failure {
  const char* code;
  std::string subject;  ///< The path of the file, or a message.
  Severity severity;
};

/// A file that cannot be opened.
Failure unopened_file(std::string_view path, Severity severity);

/// An error in the data, which ends the run.
Failure content_error(std::string_view message);

/// Writes the failure's line into the log.
void log_failure(const Failure& failure);

/// Writes an HTML error fragment about a directory that cannot be opened to standard output.
///
/// `link` is the address of a page to go on to, or empty. The CGI header and the opening document
/// tags come only with `with_header` 1; the closing tags always do (contract: closing-tags): the
/// page around the fragment has been opened by whoever includes it. Texts pass into the page
/// unescaped.
void write_dir_error_page(const std::string& directory, const std::string& link, int with_header);

}  // namespace toplist
