#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "run/trade_row.h"
#include "util/file.h"

namespace toplist::ctl {

/// The histories of the site in the working directory.
class HistoryFiles {
 public:
  /// The totals of the domain's history; nothing when there is none or it cannot be opened.
  std::optional<PeriodBlock> totals(std::string_view domain);

  /// The first history that is there and cannot be opened, and why, as errno tells; 0: none.
  [[nodiscard]] const std::string& unopened() const { return unopened_; }
  [[nodiscard]] int error() const { return error_; }

 private:
  FileBuffer file_;
  std::string unopened_;
  int error_ = 0;
};

}  // namespace toplist::ctl
