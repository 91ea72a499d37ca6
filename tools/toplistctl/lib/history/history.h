#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "run/trade_row.h"
#include "toplistctl/lib/diagnostics/error.h"

/// Snapshots: the figures of all active trades at many times, in an SQLite database.
///
/// toplistctl-record(1) describes the tables, which other programs query as well. Times are seconds
/// since 1970 in UTC.
namespace toplist::ctl {

class Database;

/// Where the snapshots of the site in the working directory are.
inline constexpr const char* kHistoryPath = "l/sys/history.sqlite";

inline constexpr std::int64_t kSecondsPerHour = 3600;
inline constexpr std::int64_t kSecondsPerDay = 24 * kSecondsPerHour;
inline constexpr std::int64_t kSecondsPerYear = 365 * kSecondsPerDay;

/// For how many seconds back one snapshot of each hour and one of each day stay: the last one.
struct Keep {
  std::int64_t hourly = 14 * kSecondsPerDay;
  std::int64_t daily = 2 * kSecondsPerYear;
};

/// The spans in a text such as "14d,2y": d is a day, y 365 days. Nothing when it is malformed, a
/// span is 0 or over 1000 years, or the first is longer than the second.
std::optional<Keep> parse_keep(std::string_view text);

/// Adds a snapshot of these rows to the database at `path`, which is created (mode 0600) when it is
/// not there, and removes the snapshots that `keep` does not include. All or nothing happens.
///
/// Of rows with the same id the first one counts. An error also when the database is damaged, was
/// written by a newer version or another program, or when others keep it locked.
Expected<void> record_snapshot(const std::string& path, std::span<const TradeRow> rows,
                               std::int64_t now, const Keep& keep = {});

/// The figures of trades at one time.
struct Moment {
  std::int64_t time;
  std::span<const TradeRow> rows;
};

/// The same for several moments at once, the oldest first: all or none of them.
Expected<void> record_snapshots(const std::string& path, std::span<const Moment> moments,
                                const Keep& keep = {});

struct Snapshot {
  std::int64_t id;
  std::int64_t time;
};

/// Sums over all trades of a snapshot.
struct SnapshotTotals {
  std::int64_t time;
  std::int64_t rin, uin, out, clk;
};

/// One trade's figures in a snapshot.
struct SeriesPoint {
  std::int64_t time;
  std::int32_t rin, out;
};
struct RecordedTrade {
  std::int32_t id;
  std::string domain;   ///< in UTF-8; the one that was recorded last for this id
  PeriodBlock figures;  ///< without percentages
};

/// A period's rin of one trade, where it is known.
struct Trend {
  std::int32_t now;
  std::optional<std::int32_t> yesterday, week_ago;

  /// Such as "rin24: 455 now, 640 yesterday, 812 a week ago".
  [[nodiscard]] std::string text() const;
};

/// The snapshots of a database, for reading: all queries see the same ones. Recording waits as long
/// as this object lives, so it must not live long.
class History {
 public:
  /// Nothing when there is no file, or no snapshot was ever recorded in it.
  static Expected<std::optional<History>> open(const std::string& path = kHistoryPath);
  History(History&&) noexcept;
  History& operator=(History&&) noexcept;
  ~History();

  /// The snapshots with from <= time <= to, the oldest first.
  [[nodiscard]] Expected<std::vector<Snapshot>> snapshots(std::int64_t from, std::int64_t to) const;
  /// The snapshot that is nearest to `time` and at most `tolerance` seconds away.
  [[nodiscard]] Expected<std::optional<Snapshot>> nearest(std::int64_t time,
                                                          std::int64_t tolerance) const;

  /// Of each snapshot, in this order.
  [[nodiscard]] Expected<std::vector<SnapshotTotals>> totals(std::span<const Snapshot> snapshots,
                                                             Period period) const;
  /// The figures of all trades of a snapshot, by rising id.
  [[nodiscard]] Expected<std::vector<RecordedTrade>> figures(const Snapshot& snapshot,
                                                             Period period) const;
  /// One trade's figures in the snapshots with from <= time <= to, the oldest first. There is none
  /// for a snapshot in which the trade was not active.
  [[nodiscard]] Expected<std::vector<SeriesPoint>> series(std::int32_t trade, Period period,
                                                          std::int64_t from, std::int64_t to) const;
  /// The row's rin24 now, and a day and a week before `now`, each from the nearest snapshot within
  /// half a day.
  [[nodiscard]] Expected<Trend> trend(const TradeRow& row, std::int64_t now) const;

 private:
  explicit History(std::unique_ptr<Database> database);
  std::unique_ptr<Database> database_;
};

}  // namespace toplist::ctl
