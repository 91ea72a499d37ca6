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
  struct Contents {
    std::int64_t tables, application, version;
  };
  auto query = database.prepare(
      "SELECT (SELECT count(*) FROM sqlite_master), application_id, user_version"
      " FROM pragma_application_id, pragma_user_version");
  if (!query) return tl::unexpected(query.error());
  const auto found = query->rows([](const Statement& row) {
    return Contents{row.number(0), row.number(1), row.number(2)};
  });
  if (!found) return tl::unexpected(found.error());
  const Contents& contents = found->front();

  if (contents.tables == 0 && contents.application == 0) return true;
  if (contents.application != kApplicationId) {
    return database.refuse("it is a database of another program", "Use another file.");
  }
  if (contents.version <= kSchemaVersion) return false;
  return database.refuse(
      fmt::format("a newer toplistctl wrote it, in version {}; this one knows {}", contents.version,
                  kSchemaVersion),
      "Use the newer toplistctl, or another file.");
}

tl::unexpected<Error> not_regular(const Access& access, const std::string& path) {
  return failure(
      fmt::format("{} {}: it is not a regular file. {}", access.tried, path, access.consequence));
}

/// Creates the file for its owner alone, if it is not there. (SQLite would let others read it.)
Expected<void> create_file(const std::string& path) {
  const UniqueFd file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0) {
    const int code = errno;
    return tl::unexpected(
        Error{std::string(kRecording.tried), path, code, std::string(kRecording.consequence)});
  }
  if (!S_ISREG(status.st_mode)) return not_regular(kRecording, path);
  return {};
}

Expected<std::int64_t> add_snapshot(const Database& database, std::int64_t now) {
  return database.prepare("INSERT INTO snapshots(time) VALUES (?)")
      .and_then([now](Statement insert) { return insert.run(now); })
      .map([&database] { return database.last_id(); });
}

/// Keeps the last recorded snapshot of each hour of the hourly span, and of each day of the daily
/// one. Removed ones leave their pages to the next one, so the file does not grow.
Expected<void> thin_out(const Database& database, std::int64_t now, const Keep& keep) {
  return database
      .prepare(
          "DELETE FROM snapshots WHERE id IN (SELECT id FROM (SELECT id, time,"
          " row_number() OVER (PARTITION BY time / 3600 ORDER BY id DESC) AS in_hour,"
          " row_number() OVER (PARTITION BY time / 86400 ORDER BY id DESC) AS in_day"
          " FROM snapshots)"
          " WHERE NOT (in_hour = 1 AND time >= ?1) AND NOT (in_day = 1 AND time >= ?2))")
      .and_then([&](Statement remove) { return remove.run(now - keep.hourly, now - keep.daily); });
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
    if (auto added = insert.run(); !added) return added;
  }
  return {};
}

Expected<void> add_trades(const Database& database, std::int64_t snapshot,
                          std::span<const TradeRow> rows) {
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
    const auto done = name->run(id, std::string_view(domain)).and_then([&] {
      return add_figures(*insert, snapshot, id, row);
    });
    if (!done) return done;
  }
  return {};
}

/// Two processes that find a new file come here one after the other.
Expected<void> create_tables_if_new(const Database& database) {
  const auto found_new = is_new(database);
  if (!found_new) return tl::unexpected(found_new.error());
  return *found_new ? database.execute(schema()) : Expected<void>();
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
  const auto opened =
      create_file(path).and_then([&path] { return Database::open(path, kRecording); });
  if (!opened) return tl::unexpected(opened.error());
  const Database& database = **opened;
  // Space of removed snapshots is used again, so it need not be overwritten; and nothing of a
  // transaction goes to a folder for temporary files, which may be full.
  return database
      .execute(
          "PRAGMA foreign_keys = ON; PRAGMA secure_delete = OFF; PRAGMA temp_store = MEMORY;"
          "PRAGMA cell_size_check = ON; BEGIN IMMEDIATE")
      .and_then([&] { return create_tables_if_new(database); })
      .and_then([&] { return add_snapshot(database, now); })
      .and_then([&](std::int64_t snapshot) {
        return thin_out(database, now, keep).and_then([&] {
          return add_trades(database, snapshot, rows);
        });
      })
      .and_then([&] { return database.execute("COMMIT"); });
}

History::History(std::unique_ptr<Database> database) : database_(std::move(database)) {}
History::History(History&&) noexcept = default;
History& History::operator=(History&&) noexcept = default;
History::~History() = default;

Expected<std::optional<History>> History::open(const std::string& path) {
  struct stat status {};
  const bool found = ::stat(path.c_str(), &status) == 0;
  if (!found && errno == ENOENT) return std::nullopt;
  if (found && !S_ISREG(status.st_mode)) return not_regular(kReading, path);
  auto opened = Database::open(path, kReading);
  if (!opened) return tl::unexpected(opened.error());
  return (*opened)
      ->execute("BEGIN")
      .and_then([&] { return is_new(**opened); })
      .map([&](bool empty) {
        return empty ? std::nullopt : std::optional(History(std::move(*opened)));
      });
}

Expected<std::vector<Snapshot>> History::snapshots(std::int64_t from, std::int64_t to) const {
  return database_
      ->prepare("SELECT id, time FROM snapshots WHERE time BETWEEN ? AND ? ORDER BY time, id")
      .and_then([&](Statement query) {
        return query.rows(
            [](const Statement& row) {
              return Snapshot{row.number(0), row.number(1)};
            },
            from, to);
      });
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
  auto query = database_->prepare(
      "SELECT sum(rin), sum(uin), sum(out), sum(clk) FROM figures"
      " WHERE snapshot = ? AND period = ?");
  if (!query) return tl::unexpected(query.error());
  std::vector<SnapshotTotals> totals;
  for (const Snapshot& snapshot : snapshots) {
    const auto sums = query->rows(
        [&snapshot](const Statement& row) {
          return SnapshotTotals{snapshot.time, row.number(0), row.number(1), row.number(2),
                                row.number(3)};
        },
        snapshot.id, kPeriodNumbers[period]);
    if (!sums) return tl::unexpected(sums.error());
    totals.push_back(sums->front());
  }
  return totals;
}

Expected<std::vector<RecordedTrade>> History::figures(const Snapshot& snapshot,
                                                      Period period) const {
  return database_
      ->prepare(fmt::format("SELECT trade, domain{} FROM figures JOIN trades ON id = trade"
                            " WHERE snapshot = ? AND period = ? ORDER BY trade",
                            figure_columns(", {}")))
      .and_then([&](Statement query) {
        return query.rows(
            [](const Statement& row) {
              RecordedTrade trade{row.number<std::int32_t>(0), row.text(1), {}};
              for (std::size_t i = 0; i < kFigures; ++i) {
                figure(trade.figures, i) = row.number<std::int32_t>(static_cast<int>(i) + 2);
              }
              return trade;
            },
            snapshot.id, kPeriodNumbers[period]);
      });
}

Expected<std::vector<SeriesPoint>> History::series(std::int32_t trade, Period period,
                                                   std::int64_t from, std::int64_t to) const {
  // A cross join keeps the order of the tables: a few snapshots, and one row of figures for each.
  return database_
      ->prepare(
          "SELECT time, rin, out FROM snapshots CROSS JOIN figures ON snapshot = id"
          " WHERE trade = ? AND period = ? AND time BETWEEN ? AND ? ORDER BY time, id")
      .and_then([&](Statement query) {
        return query.rows(
            [](const Statement& row) {
              return SeriesPoint{row.number(0), row.number<std::int32_t>(1),
                                 row.number<std::int32_t>(2)};
            },
            trade, kPeriodNumbers[period], from, to);
      });
}

Expected<Trend> History::trend(const TradeRow& row, std::int64_t now) const {
  constexpr std::int64_t kTolerance = kSecondsPerDay / 2;
  const auto rin_at = [&](std::int64_t time) -> Expected<std::optional<std::int32_t>> {
    return nearest(time, kTolerance)
        .and_then([&](const std::optional<Snapshot>& snapshot) {
          return !snapshot ? Expected<std::vector<SeriesPoint>>()
                           : series(id_of(row), kPeriod24, snapshot->time, snapshot->time);
        })
        .map([](const std::vector<SeriesPoint>& points) {
          return points.empty() ? std::nullopt : std::optional(points.back().rin);
        });
  };
  const auto yesterday = rin_at(now - kSecondsPerDay);
  if (!yesterday) return tl::unexpected(yesterday.error());
  return rin_at(now - 7 * kSecondsPerDay).map([&](const std::optional<std::int32_t>& week_ago) {
    return Trend{row.periods[kPeriod24].rin, *yesterday, week_ago};
  });
}

std::string Trend::text() const {
  std::string text = fmt::format("rin24: {} now", now);
  if (yesterday) text += fmt::format(", {} yesterday", *yesterday);
  if (week_ago) text += fmt::format(", {} a week ago", *week_ago);
  return text;
}

}  // namespace toplist::ctl
