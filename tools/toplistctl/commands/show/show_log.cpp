#include <array>
#include <map>
#include <optional>
#include <tuple>

#include "run/sys_log.h"
#include "toplistctl/commands/show/show.h"

namespace toplist::ctl {
namespace {

std::string time_text(const std::optional<std::time_t>& time) {
  if (!time) return "";
  std::tm local{};
  ::localtime_r(&*time, &local);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &local);
  return text.data();
}

std::string event_of(const LogLine& line) {
  if (line.code.empty()) return "";
  if (line.code == kUnopenedFileCode) return "cannot open";
  if (line.code == kContentErrorCode) return "bad data";
  return "code " + line.code;
}

std::string outcome_of(const LogLine& line) {
  if (line.severity == severity_text(Severity::run_ends)) return "gave up";
  if (line.severity == severity_text(Severity::run_goes_on)) return "went on";
  return line.severity;
}

/// The lines of one kind: they differ in nothing but their times.
struct LogKind {
  const LogLine* line;  ///< the first of them
  std::size_t count = 0;
  std::optional<std::time_t> first, last;
};

/// In the order in which the kinds first come.
std::vector<LogKind> kinds_of(const std::vector<LogLine>& lines) {
  std::vector<LogKind> kinds;
  const auto key = [](const LogLine& line) {
    return std::tie(line.module, line.code, line.subject, line.severity, line.detail);
  };
  std::map<decltype(key(lines[0])), std::size_t> known;
  for (const LogLine& line : lines) {
    const auto [entry, is_new] = known.emplace(key(line), kinds.size());
    if (is_new) kinds.push_back({.line = &line, .first = line.time, .last = line.time});
    LogKind& kind = kinds[entry->second];
    ++kind.count;
    if (line.time) kind.last = line.time;
  }
  return kinds;
}

}  // namespace

std::string show_log(const std::vector<LogLine>& lines, Format format) {
  Records records({"time", "program", "what", "subject", "it", "detail"});
  for (const LogLine& line : lines) {
    records.add({time_text(line.time), line.module, event_of(line), line.subject, outcome_of(line),
                 line.detail});
  }
  return records.text(format);
}

std::string show_log_summary(const std::vector<LogLine>& lines, Format format) {
  Records records({"count", "first", "last", "program", "what", "subject", "it"});
  for (const LogKind& kind : kinds_of(lines)) {
    records.add({kind.count, time_text(kind.first), time_text(kind.last), kind.line->module,
                 event_of(*kind.line), kind.line->subject, outcome_of(*kind.line)});
  }
  return records.text(format);
}

}  // namespace toplist::ctl
