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

/// Whether a site's schedule is alive and its pages are whole.
namespace toplist::ctl {

inline constexpr std::int64_t kMinuteSeconds = 60;
inline constexpr std::int64_t kDaySeconds = kMinuteSeconds * 60 * 24;

/// What counts as late; all in seconds.
struct StatusLimits {
  std::int64_t page_age = 15 * kMinuteSeconds;
  std::int64_t thumbnail_age = 30 * kDaySeconds;
  std::optional<std::int64_t> log_span = {};  ///< nothing: since the newest page
  bool pages_only = false;                    ///< log lines and a long run are no faults
};

/// A toplist's page.
struct PageStatus {
  std::size_t record;  ///< in "d/tl/tl", from 1
  std::string page;
  std::optional<std::int64_t> age;  ///< seconds; nothing when there is no page
  Prospect next_run;
  bool late;  ///< runs are to build it, and it is missing or older than the limit
  std::optional<std::string> cut = {};  ///< why it is not whole

  [[nodiscard]] bool is_fine() const { return !late && !cut; }
};

/// The pages of all toplists at the time `now`; late are those older than `limit` seconds.
///
/// A run that finds the disk full leaves a page empty or cut, and cannot report it. So a page is
/// cut when it does not end as its template does, unless the template is newer.
std::vector<PageStatus> page_statuses(const SiteView& site, std::int64_t limit, std::time_t now);

/// A folder of pages whose file system is nearly full.
struct LittleRoom {
  std::string folder;
  std::string text;  ///< how much is free, and how much the pages take
};

/// The first folder whose file system has less free room than the pages there take.
std::optional<LittleRoom> little_room(const SiteView& site);

/// Why a run could not write the log; nothing when it could.
std::optional<std::string> log_fault();

struct SiteStatus {
  std::vector<PageStatus> pages = {};
  std::string ending = {};  ///< why the next run ends too early; empty when it does not
  std::optional<LittleRoom> little_room = {};
  std::optional<std::string> log_fault = {};
  std::vector<LogLine> log_lines = {};     ///< of this program, in the span
  bool has_more_lines = false;             ///< the log's end that is read is shorter than the span
  std::optional<LockHolder> running = {};  ///< a run, or another holder of its lock, is under way
  bool running_late = false;               ///< for longer than a page may be old
  std::size_t active_trades = 0;
  bool thumbnails_required = false;
  std::size_t without_thumbnail = 0;  ///< active trades, where thumbnails are required
  std::size_t stale_thumbnails = 0;   ///< of active trades, older than the limit
  bool pages_only = false;

  /// How many lines say that a run ended early. What a run logs and then goes on without, such as
  /// a missing history, is for `check` to report: some sites never have it.
  [[nodiscard]] std::size_t failed_runs() const;

  /// The one place that decides what is a fault: whether there is none.
  [[nodiscard]] bool is_fine() const;
};

/// The status at the time `now`.
SiteStatus status_of(const SiteView& site, const StatusLimits& limits, std::time_t now);

/// A page's state in one word: "fine", "LATE", "MISSING" or "CUT".
std::string state_of(const PageStatus& page);

/// What the next run does with a page. A run that ends early has one reason for all pages that it
/// does not reach, which is left out here.
std::string next_run_of(const PageStatus& page);

/// A sentence and a line feed: whether a run is in progress; the trades and their thumbnails.
std::string running_text(const SiteStatus& status);
std::string trades_text(const SiteStatus& status);

/// Such as "4m" or "3d 2h": the two largest units.
std::string duration_text(std::int64_t seconds);

}  // namespace toplist::ctl
