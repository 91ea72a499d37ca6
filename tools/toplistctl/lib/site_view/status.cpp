#include "toplistctl/lib/site_view/status.h"

#include <sys/stat.h>

#include <algorithm>

#include "run/sys_log.h"
#include "toplistctl/lib/site_files/site_file.h"

namespace toplist::ctl {
namespace {

/// When the file was written; nothing when there is none.
std::optional<std::time_t> time_of(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return status.st_mtime;
}

/// Whether the operator expects runs to build the page: not one that is switched off by its mode.
bool is_expected(const ToplistView& toplist) {
  return toplist.allowed || toplist.definition->build_mode == "1";
}

PageStatus page_status(const ToplistView& toplist, std::int64_t limit, std::time_t now) {
  PageStatus page{.record = toplist.record,
                  .page = toplist.definition->output_path,
                  .age = std::nullopt,
                  .next_run = toplist.next_run,
                  .late = false};
  if (const auto written = time_of(page.page)) page.age = now - *written;
  page.late = is_expected(toplist) && (!page.age || *page.age > limit);
  return page;
}

/// The lines that this program has logged since the newest page, or in the span.
std::vector<LogLine> own_log_lines(const std::vector<PageStatus>& pages, const StatusLimits& limits,
                                   std::time_t now) {
  std::optional<std::int64_t> span = limits.log_span;
  if (!span) {
    for (const PageStatus& page : pages) {
      if (page.age && (!span || *page.age < *span)) span = page.age;
    }
  }
  const SiteFile log(kLogPath);
  std::vector<LogLine> lines = read_log(log.text());
  if (span) lines = lines_since(std::move(lines), now - *span);
  std::erase_if(lines, [](const LogLine& line) { return !line.is_own(); });
  return lines;
}

void count_thumbnails(const RunState& run, std::int64_t limit, std::time_t now,
                      SiteStatus& status) {
  for (const TradeRow& row : run.rows) {
    const auto written = time_of(run.config.thumb_dir() + row.domain + ".jpg");
    if (!written) {
      ++status.without_thumbnail;
    } else if (now - *written > limit) {
      ++status.stale_thumbnails;
    }
  }
}

}  // namespace

bool SiteStatus::is_fine() const {
  const bool pages_fine =
      ending.empty() &&
      std::none_of(pages.begin(), pages.end(), [](const PageStatus& page) { return page.late; });
  return pages_fine && (pages_only || (log_lines.empty() && !running_late));
}

std::vector<PageStatus> page_statuses(const SiteView& site, std::int64_t limit, std::time_t now) {
  std::vector<PageStatus> pages;
  for (const ToplistView& toplist : site.toplists) {
    pages.push_back(page_status(toplist, limit, now));
  }
  return pages;
}

SiteStatus status_of(const SiteView& site, const StatusLimits& limits, std::time_t now) {
  SiteStatus status;
  status.pages_only = limits.pages_only;
  status.ending = site.rehearsal.ending();
  status.pages = page_statuses(site, limits.page_age, now);
  status.log_lines = own_log_lines(status.pages, limits, now);
  status.running = lock_holder();
  status.running_late =
      status.running && status.running->seconds && *status.running->seconds > limits.page_age;
  status.active_trades = site.run.rows.size();
  count_thumbnails(site.run, limits.thumbnail_age, now, status);
  return status;
}

}  // namespace toplist::ctl
