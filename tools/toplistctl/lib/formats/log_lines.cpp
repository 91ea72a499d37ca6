#include "toplistctl/lib/formats/log_lines.h"

#include <algorithm>
#include <array>
#include <map>
#include <tuple>
#include <utility>

#include "run/sys_log.h"
#include "util/fields.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

constexpr std::size_t kTimeDigits = 12;
constexpr std::time_t kMinute = 60;

/// The local time of "200612312359".
std::optional<std::time_t> read_time(std::string_view text) {
  if (text.size() != kTimeDigits || !std::all_of(text.begin(), text.end(), is_digit)) {
    return std::nullopt;
  }
  const auto number = [text](std::size_t at, std::size_t size) {
    return parse_int32(text.substr(at, size));
  };
  std::tm time{};
  time.tm_year = number(0, 4) - 1900;
  time.tm_mon = number(4, 2) - 1;
  time.tm_mday = number(6, 2);
  time.tm_hour = number(8, 2);
  time.tm_min = number(10, 2);
  time.tm_isdst = -1;
  return std::mktime(&time);
}

std::vector<std::string_view> fields_of(std::string_view line) {
  std::vector<std::string_view> all;
  FieldReader fields(line);
  for (std::string_view field; fields.next(field);) all.push_back(field);
  return all;
}

/// The text from the start of one field to the end of another of the same line.
std::string_view joined(std::string_view first, std::string_view last) {
  return {first.data(), static_cast<std::size_t>(last.data() + last.size() - first.data())};
}

LogLine read_line(std::string_view line) {
  const std::vector<std::string_view> fields = fields_of(line);
  if (fields.size() < kLogFields || !fields[0].empty()) {
    return {.subject = restore_log_field(line)};
  }
  // A "|" in the subject is not escaped: additional fields belong to the subject.
  const std::size_t surplus = fields.size() - kLogFields;
  return {.time = read_time(fields[1]),
          .module = restore_log_field(fields[2]),
          .code = std::string(fields[3]),
          .subject = restore_log_field(joined(fields[4], fields[4 + surplus])),
          .severity = restore_log_field(fields[5 + surplus]),
          .detail = restore_log_field(fields[6 + surplus])};
}

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

bool LogLine::is_own() const { return module == kLogModule; }

std::vector<LogLine> read_log(std::string_view text) {
  std::vector<LogLine> lines;
  FieldReader reader(text, kLineSeparator);
  for (std::string_view line; reader.next(line);) lines.push_back(read_line(line));
  return lines;
}

std::vector<LogLine> lines_since(std::vector<LogLine> lines, std::time_t start) {
  std::erase_if(
      lines, [start](const LogLine& line) { return !line.time || *line.time <= start - kMinute; });
  return lines;
}

Records log_records(const std::vector<LogLine>& lines) {
  Records records({"time", "program", "event", "subject", "outcome", "detail"});
  for (const LogLine& line : lines) {
    records.add({time_text(line.time), line.module, event_of(line), line.subject, outcome_of(line),
                 line.detail});
  }
  return records;
}

Records log_summary(const std::vector<LogLine>& lines) {
  Records records({"count", "first", "last", "program", "event", "subject", "outcome"});
  for (const LogKind& kind : kinds_of(lines)) {
    records.add({kind.count, time_text(kind.first), time_text(kind.last), kind.line->module,
                 event_of(*kind.line), kind.line->subject, outcome_of(*kind.line)});
  }
  return records;
}

}  // namespace toplist::ctl
