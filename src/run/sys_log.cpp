#include "run/sys_log.h"

#include <fcntl.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <iterator>

#include "util/file.h"
#include "util/text.h"

namespace toplist {
namespace {

struct Replacement {
  std::string_view from;
  std::string_view to;
};

/// Applied in this order. The semicolon comes before the entities that end in one, so that it is
/// not escaped twice. The last two rows no longer find anything (contract: replacement-order).
constexpr Replacement kLogReplacements[] = {
    {"\r", ""},     {"\n", ""},     {";", "&#59;"},  {"<", "&#60;"}, {">", "&#62;"},
    {"`", "&#96;"}, {"'", "&#39;"}, {"\"", "&#34;"}, {"!", "&#33;"}, {"\\", "&#92;"},
    {"/", "&#47;"}, {"<", "&lt;"},  {">", "&gt;"},
};

std::string local_time_text() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  std::array<char, 13> text{};  // YYYYMMDDhhmm and a NUL
  std::strftime(text.data(), text.size(), "%Y%m%d%H%M", &local);
  return text.data();
}

}  // namespace

std::string sanitize_log_field(std::string_view text) {
  std::string clean(text);
  for (const Replacement& replacement : kLogReplacements) {
    replace_all(clean, replacement.from, replacement.to);
  }
  return clean;
}

std::string restore_log_field(std::string_view field) {
  std::string text(field);
  for (auto it = std::rbegin(kLogReplacements); it != std::rend(kLogReplacements); ++it) {
    if (!it->to.empty()) replace_all(text, it->to, it->from);
  }
  return text;
}

void write_sys_log(std::string_view module, std::string_view code, std::string_view subject,
                   std::string_view severity, std::string_view detail) {
  std::string line = "|" + local_time_text() + "|" + sanitize_log_field(module) + "|";
  line.append(code);  // uncleaned: always one of the fixed codes (contract: raw-log-code)
  line += "|" + sanitize_log_field(subject) + "|" + sanitize_log_field(severity) + "|" +
          sanitize_log_field(detail) + "|||\n";
  const UniqueFd fd(::open(kLogPath, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
  if (fd) write_fully(fd.get(), line);
}

const char* severity_text(Severity severity) { return severity == Severity::run_ends ? "1" : "0"; }

Failure unopened_file(std::string_view path, Severity severity) {
  return {kUnopenedFileCode, std::string(path), severity};
}

Failure content_error(std::string_view message) {
  return {kContentErrorCode, std::string(message), Severity::run_ends};
}

void log_failure(const Failure& failure) {
  write_sys_log(kLogModule, failure.code, failure.subject, severity_text(failure.severity), "");
}

void write_dir_error_page(const std::string& directory, const std::string& link, int with_header) {
  std::string page;
  if (with_header == 1) {
    page +=
        "Content-type: text/html\r\n\r\n"
        "<html>\n<head>\n<title>Vanta Core</title>\n</head>\n<body bgcolor=white>\n";
  }
  // The stray ";" after the style attribute is part of the text.
  page +=
      "<div align=center>\n<font style=\"font:normal 8pt arial;\";><font "
      "style=\"color:red;\"><b>Error</b></font><br>\n";
  page += "Unable to open directory <b>" + directory + "</b><br>\n";
  if (!link.empty()) page += "<a href=\"" + link + "\">" + link + "</a><br>\n";
  page += "Please check file permissions and try again.<br>\n</font>\n</div>\n";
  page += "</body>\n</html>";
  std::fwrite(page.data(), 1, page.size(), stdout);
  std::fflush(stdout);
}

}  // namespace toplist
