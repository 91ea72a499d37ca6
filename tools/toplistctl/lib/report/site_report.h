#pragma once

#include <array>
#include <cstdint>
#include <ctime>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "toplistctl/lib/history/history.h"
#include "toplistctl/lib/report/report.h"
#include "toplistctl/lib/site_view/status.h"

/// What the report shows, before it is written as a page.
namespace toplist::ctl {

struct Traffic {
  std::int64_t in, out;
};

/// The visitors in and out in slots of an hour or a day. A slot has the figures of its last
/// snapshot, and none if nothing was recorded in it.
struct Series {
  std::int64_t slot_seconds;
  std::int64_t first;  ///< slot: its number since 1970
  std::vector<std::optional<Traffic>> slots;

  /// The last `count` slots up to `now`, all of them empty.
  Series(std::int64_t slot_seconds, std::size_t count, std::int64_t now);
  /// Ignored outside of the slots.
  void add(std::int64_t time, const Traffic& traffic);
};

/// A sum over all partners, for a period now and one period ago.
struct Span {
  std::string_view name;
  Period period;
  std::int64_t seconds;
  SnapshotTotals now = {};
  std::optional<SnapshotTotals> before = {};
};

/// A partner: an active trade.
struct Partner {
  const TradeRow* row;
  std::vector<std::optional<std::size_t>> ranks = {};  ///< in each toplist, from 0
  std::optional<Series> days = {};                     ///< by rin24; of the first ones only
  std::optional<std::int32_t> week_before = {};        ///< rin07 a week ago
  bool is_new = false;                                 ///< was no partner a week ago

  [[nodiscard]] std::int64_t change() const;  ///< of rin07 since a week ago
};

struct SiteReport {
  const SiteView* site;
  std::time_t now;
  std::size_t top;
  SiteStatus status;
  std::vector<LogLine> last_day;  ///< logged
  std::array<Span, 3> spans{{{"hour", kPeriod60, kSecondsPerHour},
                             {"day", kPeriod24, kSecondsPerDay},
                             {"week", kPeriod07, 7 * kSecondsPerDay}}};
  std::vector<Partner> partners = {};  ///< by falling rin24
  std::vector<std::set<std::int32_t>> places =
      {};  ///< the ranks that each toplist's template names
  bool has_history = false;
  bool knows_last_week = false;
  Series hours{kSecondsPerHour, 48, now}, days{kSecondsPerDay, 30, now};

  [[nodiscard]] bool is_shown(const Partner& partner, std::size_t toplist) const;
};

Expected<SiteReport> make_report(const SiteView& site, const ReportOptions& options);

}  // namespace toplist::ctl
