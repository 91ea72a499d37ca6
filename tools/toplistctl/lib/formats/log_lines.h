#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toplistctl/lib/output/records.h"

namespace toplist::ctl {

/// A line of the system log with its entities decoded. Other programs write to the log, too: a line
/// of another shape is kept as its subject, without a time.
struct LogLine {
  std::optional<std::time_t> time = {};
  std::string module = {};
  std::string code = {};
  std::string subject = {};
  std::string severity = {};
  std::string detail = {};

  /// Whether this program wrote it.
  [[nodiscard]] bool is_own() const;
};

std::vector<LogLine> read_log(std::string_view text);

/// The lines as of the minute in which `start` lies. The log's times are minutes: a line of that
/// minute may be older. Lines without a time are left out.
std::vector<LogLine> lines_since(std::vector<LogLine> lines, std::time_t start);

/// The lines with their times, events and outcomes in words.
Records log_records(const std::vector<LogLine>& lines);

/// A row for all lines that differ only in their times: their count, first and last time.
Records log_summary(const std::vector<LogLine>& lines);

}  // namespace toplist::ctl
