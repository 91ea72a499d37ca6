#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "toplistctl/lib/formats/log_lines.h"
#include "toplistctl/lib/site_files/site_lock.h"
#include "toplistctl/lib/site_view/site_view.h"

namespace toplist::ctl {

inline constexpr std::int64_t kMinuteSeconds = 60;
inline constexpr std::int64_t kDaySeconds = kMinuteSeconds * 60 * 24;

/// What counts as late; all in seconds.
struct StatusLimits {
  std::int64_t page_age = 15 * kMinuteSeconds;
  std::int64_t thumbnail_age = 30 * kDaySeconds;
  std::optional<std::int64_t> log_span = {};  ///< nothing: since the newest page
  bool pages_only = false;                    ///< the log and a long run are told, but are no fault
};

/// A toplist's page as it stands.
struct PageStatus {
  std::size_t record;  ///< in "d/tl/tl", from 1
  std::string page;
  std::optional<std::int64_t> age;  ///< seconds; nothing when there is no page
  Prospect next_run;
  bool late;  ///< a run is to build it, and it is missing or older than the limit
};

/// The pages of all toplists at the time `now`; late are those older than `limit` seconds.
std::vector<PageStatus> page_statuses(const SiteView& site, std::int64_t limit, std::time_t now);

/// Whether a site's schedule is alive.
struct SiteStatus {
  std::vector<PageStatus> pages = {};
  std::string ending = {};              ///< why the next run ends too early; empty when it does not
  std::vector<LogLine> log_lines = {};  ///< of this program, in the span
  std::optional<LockHolder> running = {};  ///< a run, or another holder of its lock, is under way
  bool running_late = false;               ///< for longer than a page may be old
  std::size_t active_trades = 0;
  std::size_t without_thumbnail = 0;  ///< active trades
  std::size_t stale_thumbnails = 0;   ///< of active trades, older than the limit

  /// Whether anything is late, or was logged.
  [[nodiscard]] bool is_fine() const;
  bool pages_only = false;
};

/// The status at the time `now`.
SiteStatus status_of(const SiteView& site, const StatusLimits& limits, std::time_t now);

/// Such as "4m" or "3d 2h": the two largest units.
std::string duration_text(std::int64_t seconds);

/// For people; for programs, see toplistctl(1); and in the text format of metrics that
/// node_exporter's textfile collector takes.
std::string status_text(const SiteStatus& status);
std::string status_json(const SiteStatus& status);
std::string status_metrics(const SiteStatus& status);

}  // namespace toplist::ctl
