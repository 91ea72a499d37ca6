#include "toplistctl/lib/history/history.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <unordered_set>
#include <utility>

#include "toplistctl/lib/history/database.h"
#include "toplistctl/lib/output/value.h"
#include "util/unique_fd.h"

namespace toplist::ctl {
namespace {

/// "tlhs" in the file's header, by which file(1) and this program recognise the database.
constexpr std::int64_t kApplicationId = 0x746C6873;
constexpr std::int64_t kSchemaVersion = 1;

constexpr Access kRecording{SQLITE_OPEN_READWRITE, "cannot record in", "Nothing was recorded."};
constexpr Access kReading{SQLITE_OPEN_READONLY, "cannot read", "Nothing was changed."};

/// The periods as the database names them, in the order of Period.
constexpr std::array<int, kPeriodCount> kPeriodNumbers{60, 24, 7, 99};

/// The figures of a period as the database has them: the counters, then the further values.
constexpr std::size_t kFigures = kCounters.size() + kFurtherNames.size();

template <typename Block>
auto& figure(Block& block, std::size_t i) {
  return i < kCounters.size() ? block.*kCounters[i].member : block.further[i - kCounters.size()];
}

/// Their columns, each written by `format`, where "{}" is its name.
std::string figure_columns(std::string_view format) {
  std::string columns;
  for (std::size_t i = 0; i < kFigures; ++i) {
    columns +=
        fmt::format(fmt::runtime(format),
                    i < kCounters.size() ? kCounters[i].name : kFurtherNames[i - kCounters.size()]);
  }
  return columns;
}

/// Rows of "figures" lie in the order of their key: those of a snapshot together, so that one is
/// added and removed as a whole, and in it those of a period, so that totals read no others.
/// Domains are kept once for each trade, not in each of its rows.
std::string schema() {
  return fmt::format(
      "CREATE TABLE snapshots(id INTEGER PRIMARY KEY, time INTEGER NOT NULL);"
      "CREATE TABLE trades(id INTEGER PRIMARY KEY, domain TEXT NOT NULL);"
      "CREATE TABLE figures("
      " snapshot INTEGER NOT NULL REFERENCES snapshots(id) ON DELETE CASCADE,"
      " period INTEGER NOT NULL, trade INTEGER NOT NULL REFERENCES trades(id),{}"
      " PRIMARY KEY (snapshot, period, trade)) WITHOUT ROWID;"
      "PRAGMA application_id = {}; PRAGMA user_version = {};",
      figure_columns(" {} INTEGER NOT NULL,"), kApplicationId, kSchemaVersion);
}

/// Whether the file holds nothing yet. An error when it holds what this program cannot use.
Expected<bool> is_new(const Database& database) {
  using Three = std::array<std::int64_t, 3>;
  const auto found = database.query(
      "SELECT (SELECT count(*) FROM sqlite_master), application_id, user_version"
      " FROM pragma_application_id, pragma_user_version",
      [](const Statement& row) {
        return Three{row.number(0), row.number(1), row.number(2)};
      });
  if (!found) return tl::unexpected(found.error());
  const auto [tables, application, version] = found->front();

  if (tables == 0 && application == 0) return true;
  if (application != kApplicationId) {
    return database.refuse("it is a database of another program", "Use another file.");
  }
  if (version <= kSchemaVersion) return false;
  return database.refuse(
      fmt::format("a newer toplistctl wrote it, in version {}; this one knows {}", version,
                  kSchemaVersion),
      "Use the newer toplistctl, or another file.");
}

/// Opens a regular file; others may block or never end. `flags` are those of open(): with O_CREAT
/// the file is made for its owner alone, where SQLite would let others read it.
Expected<std::unique_ptr<Database>> open_file(const std::string& path, int flags,
                                              const Access& access) {
  Error error{fmt::format("{} {}", access.tried, path), {}, 0, std::string(access.consequence)};
  const UniqueFd file(::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0600));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0) {
    error.code = errno;
    return tl::unexpected(error);
  }
  if (S_ISREG(status.st_mode)) return Database::open(path, access);
  error.tried += ": it is not a regular file";
  return tl::unexpected(error);
}

/// Keeps the last recorded snapshot of each hour of the hourly span, and of each day of the daily
/// one. Removed ones leave their pages to the next one, so the file does not grow.
std::string thinning(std::int64_t now, const Keep& keep) {
  return fmt::format(
      "DELETE FROM snapshots WHERE id IN (SELECT id FROM (SELECT id, time,"
      " row_number() OVER (PARTITION BY time / 3600 ORDER BY id DESC) AS in_hour,"
      " row_number() OVER (PARTITION BY time / 86400 ORDER BY id DESC) AS in_day FROM snapshots)"
      " WHERE NOT (in_hour = 1 AND time >= {}) AND NOT (in_day = 1 AND time >= {}))",
      now - keep.hourly, now - keep.daily);
}

std::int32_t id_of(const TradeRow& row) {
  std::int32_t id = -1;
  std::from_chars(row.id.data(), row.id.data() + row.id.size(), id);
  return id;
}

Expected<void> add_figures(Statement& insert, std::int64_t snapshot, std::int32_t trade,
                           const TradeRow& row) {
  for (std::size_t period = 0; period < kPeriodCount; ++period) {
    int parameter = 0;
    insert.bind(++parameter, snapshot);
    insert.bind(++parameter, kPeriodNumbers[period]);
    insert.bind(++parameter, trade);
    for (std::size_t i = 0; i < kFigures; ++i) {
      insert.bind(++parameter, figure(row.periods[period], i));
    }
    if (const auto added = insert.step(); !added) return tl::unexpected(added.error());
  }
  return {};
}

/// The rows become those of the snapshot that was added last.
Expected<void> add_trades(const Database& database, std::span<const TradeRow> rows) {
  const std::int64_t snapshot = database.last_id();
  auto name = database.prepare(
      "INSERT INTO trades VALUES (?, ?)"
      " ON CONFLICT (id) DO UPDATE SET domain = excluded.domain WHERE domain <> excluded.domain");
  if (!name) return tl::unexpected(name.error());
  auto insert = database.prepare(
      fmt::format("INSERT INTO figures VALUES (?, ?, ?{})", figure_columns(", ?")));
  if (!insert) return tl::unexpected(insert.error());

  std::unordered_set<std::int32_t> added;
  for (const TradeRow& row : rows) {
    const std::int32_t id = id_of(row);
    if (!added.insert(id).second) continue;
    const std::string domain = as_utf8(row.domain);
    name->bind(1, id);
    name->bind(2, domain);
    const auto done =
        name->step().and_then([&](bool) { return add_figures(*insert, snapshot, id, row); });
    if (!done) return done;
  }
  return {};
}

}  // namespace

std::optional<Keep> parse_keep(std::string_view text) {
  const auto span_of = [](std::string_view part) -> std::int64_t {
    constexpr std::int64_t kMostYears = 1000;
    std::int64_t count = 0;
    const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), count);
    const std::string_view unit(end, part.data() + part.size());
    const std::int64_t seconds = unit == "d" ? kSecondsPerDay : unit == "y" ? kSecondsPerYear : 0;
    if (error != std::errc() || seconds == 0) return 0;
    return count < 1 || count > kMostYears * kSecondsPerYear / seconds ? 0 : count * seconds;
  };
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const Keep keep{.hourly = span_of(text.substr(0, comma)),
                  .daily = span_of(text.substr(comma + 1))};
  if (keep.hourly == 0 || keep.daily < keep.hourly) return std::nullopt;
  return keep;
}

Expected<void> record_snapshot(const std::string& path, std::span<const TradeRow> rows,
                               std::int64_t now, const Keep& keep) {
  const Moment moment{now, rows};
  return record_snapshots(path, {&moment, 1}, keep);
}

Expected<void> record_snapshots(const std::string& path, std::span<const Moment> moments,
                                const Keep& keep) {
  const auto opened = open_file(path, O_RDWR | O_CREAT, kRecording);
  if (!opened) return tl::unexpected(opened.error());
  const Database& database = **opened;
  // Free space is used again, so it need not be overwritten; and nothing of a transaction goes to a
  // folder for temporary files, which may be full. Two processes that find a new file see one after
  // the other whether it has its tables.
  auto done = database
                  .execute(
                      "PRAGMA foreign_keys = ON; PRAGMA secure_delete = OFF;"
                      "PRAGMA temp_store = MEMORY; PRAGMA cell_size_check = ON; BEGIN IMMEDIATE")
                  .and_then([&] { return is_new(database); })
                  .and_then([&](bool fresh) { return database.execute(fresh ? schema() : ""); });
  for (const Moment& moment : moments) {
    done = done.and_then([&] {
                 return database.execute(fmt::format("INSERT INTO snapshots(time) VALUES ({}); {}",
                                                     moment.time, thinning(moment.time, keep)));
               })
               .and_then([&] { return add_trades(database, moment.rows); });
  }
  return done.and_then([&] { return database.execute("COMMIT"); });
}

History::History(std::unique_ptr<Database> database) : database_(std::move(database)) {}
History::History(History&&) noexcept = default;
History& History::operator=(History&&) noexcept = default;
History::~History() = default;

Expected<std::optional<History>> History::open(const std::string& path) {
  auto opened = open_file(path, O_RDONLY, kReading);
  if (!opened && opened.error().code == ENOENT) return std::nullopt;
  if (!opened) return tl::unexpected(opened.error());
  const Database& database = **opened;
  return database.execute("BEGIN").and_then([&] { return is_new(database); }).map([&](bool empty) {
    return empty ? std::nullopt : std::optional(History(std::move(*opened)));
  });
}

Expected<std::vector<Snapshot>> History::snapshots(std::int64_t from, std::int64_t to) const {
  return database_->query(
      "SELECT id, time FROM snapshots WHERE time BETWEEN ? AND ? ORDER BY time, id",
      [](const Statement& row) {
        return Snapshot{row.number(0), row.number(1)};
      },
      from, to);
}

Expected<std::optional<Snapshot>> History::nearest(std::int64_t time,
                                                   std::int64_t tolerance) const {
  return snapshots(time - tolerance, time + tolerance).map([time](const auto& near) {
    std::optional<Snapshot> best;
    for (const Snapshot& snapshot : near) {
      if (!best || std::abs(snapshot.time - time) <= std::abs(best->time - time)) best = snapshot;
    }
    return best;
  });
}

Expected<std::vector<SnapshotTotals>> History::totals(std::span<const Snapshot> snapshots,
                                                      Period period) const {
  std::vector<SnapshotTotals> totals;
  for (const Snapshot& snapshot : snapshots) {
    const auto sums = database_->query(
        "SELECT sum(rin), sum(uin), sum(out), sum(clk) FROM figures"
        " WHERE snapshot = ? AND period = ?",
        [&](const Statement& row) {
          return SnapshotTotals{snapshot.time, row.number(0), row.number(1), row.number(2),
                                row.number(3)};
        },
        snapshot.id, kPeriodNumbers[period]);
    if (!sums) return sums;
    totals.push_back(sums->front());
  }
  return totals;
}

Expected<std::vector<RecordedTrade>> History::figures(const Snapshot& snapshot,
                                                      Period period) const {
  return database_->query(
      fmt::format("SELECT trade, domain{} FROM figures JOIN trades ON id = trade"
                  " WHERE snapshot = ? AND period = ? ORDER BY trade",
                  figure_columns(", {}")),
      [](const Statement& row) {
        RecordedTrade trade{row.number<std::int32_t>(0), row.text(1), {}};
        for (std::size_t i = 0; i < kFigures; ++i) {
          figure(trade.figures, i) = row.number<std::int32_t>(static_cast<int>(i) + 2);
        }
        return trade;
      },
      snapshot.id, kPeriodNumbers[period]);
}

Expected<std::vector<SeriesPoint>> History::series(std::int32_t trade, Period period,
                                                   std::int64_t from, std::int64_t to) const {
  // A cross join keeps the order of the tables: a few snapshots, and one row of figures for each.
  return database_->query(
      "SELECT time, rin, out FROM snapshots CROSS JOIN figures ON snapshot = id"
      " WHERE trade = ? AND period = ? AND time BETWEEN ? AND ? ORDER BY time, id",
      [](const Statement& row) {
        return SeriesPoint{row.number(0), row.number<std::int32_t>(1), row.number<std::int32_t>(2)};
      },
      trade, kPeriodNumbers[period], from, to);
}

Expected<Trend> History::trend(const TradeRow& row, std::int64_t now) const {
  Trend trend{row.periods[kPeriod24].rin, {}, {}};
  for (const auto& [rin, days] : {std::pair{&trend.yesterday, 1}, {&trend.week_ago, 7}}) {
    const auto then = nearest(now - days * kSecondsPerDay, kSecondsPerDay / 2);
    if (!then) return tl::unexpected(then.error());
    if (!*then) continue;
    const auto points = series(id_of(row), kPeriod24, (*then)->time, (*then)->time);
    if (!points) return tl::unexpected(points.error());
    if (!points->empty()) *rin = points->back().rin;
  }
  return trend;
}

std::string Trend::text() const {
  std::string text = fmt::format("rin24: {} now", now);
  if (yesterday) text += fmt::format(", {} yesterday", *yesterday);
  if (week_ago) text += fmt::format(", {} a week ago", *week_ago);
  return text;
}

}  // namespace toplist::ctl
