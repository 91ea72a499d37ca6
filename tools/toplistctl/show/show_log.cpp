#include <algorithm>
#include <vector>

#include "run/sys_log.h"
#include "toplistctl/json.h"
#include "toplistctl/show/show.h"
#include "toplistctl/table.h"
#include "util/fields.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

/// |time|module|code|subject|severity|detail|||
constexpr std::size_t kFields = 9;
constexpr std::size_t kTimeDigits = 12;

struct LogLine {
  std::string time, module, event, subject, outcome, detail;
};

/// "2006-12-31 23:59" of "200612312359"; any other text as it stands.
std::string readable_time(std::string_view text) {
  if (text.size() != kTimeDigits || !std::all_of(text.begin(), text.end(), is_digit)) {
    return std::string(text);
  }
  std::string time(text);
  time.insert(10, ":").insert(8, " ").insert(6, "-").insert(4, "-");
  return time;
}

std::string event_of(std::string_view code) {
  if (code == "1") return "cannot open";
  if (code == "10") return "bad data";
  return "code " + std::string(code);
}

std::string outcome_of(std::string_view severity) {
  if (severity == "1") return "gave up";
  if (severity == "0") return "went on";
  return restore_log_field(severity);
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
  if (fields.size() < kFields || !fields[0].empty())
    return {"", "", "", restore_log_field(line), "", ""};
  // A "|" in the subject is not escaped: what is too much belongs to it.
  const std::size_t surplus = fields.size() - kFields;
  return {.time = readable_time(fields[1]),
          .module = restore_log_field(fields[2]),
          .event = event_of(fields[3]),
          .subject = restore_log_field(joined(fields[4], fields[4 + surplus])),
          .outcome = outcome_of(fields[5 + surplus]),
          .detail = restore_log_field(fields[6 + surplus])};
}

std::string log_table(const std::vector<LogLine>& lines) {
  Table table({{"TIME"}, {"PROGRAM"}, {"WHAT"}, {"SUBJECT"}, {"IT"}, {"DETAIL"}});
  for (const LogLine& line : lines) {
    table.add_row({line.time, line.module, line.event, line.subject, line.outcome, line.detail});
  }
  return table.text();
}

std::string log_json(const std::vector<LogLine>& lines) {
  Json list = Json::array();
  for (const LogLine& line : lines) {
    list.push_back({{"time", line.time},
                    {"program", line.module},
                    {"what", line.event},
                    {"subject", line.subject},
                    {"it", line.outcome},
                    {"detail", line.detail}});
  }
  return json_text(list);
}

}  // namespace

std::string show_log(std::string_view text, Format format) {
  std::vector<LogLine> lines;
  FieldReader reader(text, kLineSeparator);
  for (std::string_view line; reader.next(line);) lines.push_back(read_line(line));
  return format == Format::json ? log_json(lines) : log_table(lines);
}

}  // namespace toplist::ctl
