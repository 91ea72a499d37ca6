#include "toplistctl/lib/formats/histories.h"

#include <cerrno>

#include "run/statistics.h"

namespace toplist::ctl {

std::optional<PeriodBlock> HistoryFiles::totals(std::string_view domain) {
  const std::string path = history_path(domain);
  if (!file_.read(path)) {
    if (errno != ENOENT && error_ == 0) {
      error_ = errno;
      unopened_ = path;
    }
    return std::nullopt;
  }
  PeriodBlock totals;
  add_history(file_.text(), totals);
  return totals;
}

}  // namespace toplist::ctl
