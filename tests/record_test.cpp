// Snapshots of the figures: what is recorded, what stays, and that each is whole or missing.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "support/site.h"
#include "toplistctl/lib/history/history.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;
using test::RunResult;
using test::Site;
using test::TempDir;

constexpr std::int64_t kHour = kSecondsPerHour;
constexpr std::int64_t kDay = kSecondsPerDay;
constexpr std::int64_t kNow = 1'800'000'000 / kDay * kDay;  // a day's begin
constexpr std::int64_t kEver = 1LL << 40U;

RunResult record(const Site& site, std::vector<std::string> options = {}, std::string limit = {}) {
  options.insert(options.begin(), "record");
  return site.start(
      {.program = TOPLISTCTL_PROGRAM, .arguments = std::move(options), .limit = std::move(limit)});
}

std::vector<TradeRow> rows(std::int32_t count, std::int32_t rin = 1) {
  std::vector<TradeRow> rows(static_cast<std::size_t>(count));
  for (std::int32_t i = 0; i < count; ++i) {
    TradeRow& row = rows[static_cast<std::size_t>(i)];
    row.id = std::to_string(100 + i);
    row.domain = "t" + row.id + ".example";
    row.periods[kPeriod24].rin = rin + i;
  }
  return rows;
}

History open(const std::string& path) {
  auto history = History::open(path);
  EXPECT_TRUE(history) << history.error().text();
  return std::move(history->value());
}

std::vector<std::int64_t> recorded_times(const std::string& path) {
  std::vector<std::int64_t> times;
  const auto snapshots = open(path).snapshots(0, kEver);
  for (const Snapshot& snapshot : *snapshots) times.push_back(snapshot.time);
  return times;
}

/// How many snapshots there are; each must have all of `trades`.
std::size_t whole_snapshots(const std::string& path, std::size_t trades) {
  const History history = open(path);
  const auto snapshots = *history.snapshots(0, kEver);
  for (const Snapshot& snapshot : snapshots) {
    for (const Period period : {kPeriod60, kPeriod24, kPeriod07, kPeriod99}) {
      const auto figures = history.figures(snapshot, period);
      EXPECT_TRUE(figures) << figures.error().text();
      EXPECT_EQ(figures->size(), trades) << snapshot.id;
    }
  }
  return snapshots.size();
}

pid_t start_child(const std::function<bool()>& body) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(body() ? 0 : 1);
  return child;
}

int wait_for(pid_t child) {
  int status = -1;
  ::waitpid(child, &status, 0);
  return status;
}

TEST(Record, KeepsAllFiguresOfTheActiveTrades) {
  auto trades = Site::default_trades();
  trades[1].domain = "caf\xE9.example";
  trades[2].status = 0;
  trades[3].id = trades[4].id;  // the first one counts
  trades[5].periods[kPeriod07] = {-1, INT32_MIN, INT32_MAX, 4, 5, 6, 7, 8, {}, {9, -10, 11}};
  const Site site(trades);
  site.remove("d/h/t07.example.his");
  ASSERT_EQ(record(site), RunResult{});

  const History history = open(site.path(kHistoryPath));
  const auto snapshots = *history.snapshots(0, kEver);
  ASSERT_EQ(snapshots.size(), 1U);
  for (const Period period : {kPeriod60, kPeriod24, kPeriod07, kPeriod99}) {
    const auto figures = *history.figures(snapshots[0], period);
    ASSERT_EQ(figures.size(), trades.size() - 2);
    for (const RecordedTrade& recorded : figures) {
      const auto index = static_cast<std::size_t>(recorded.id - 101);
      PeriodBlock expected = trades[index].periods[period];
      if (recorded.id == 105 && period == kPeriod99) expected = trades[3].periods[period];
      if (recorded.id == 107 && period == kPeriod99) expected = {};
      for (const CounterEntry& counter : kCounters) {
        EXPECT_EQ(recorded.figures.*counter.member, expected.*counter.member)
            << recorded.id << ' ' << counter.name << kPeriodNames[period];
      }
      EXPECT_EQ(recorded.figures.further, expected.further) << recorded.id;
    }
    EXPECT_EQ(figures[1].domain, "caf\uFFFD.example");
  }
  struct stat status {};
  ASSERT_EQ(::stat(site.path(kHistoryPath).c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST(Record, AnswersWhatReportsAsk) {
  const TempDir dir;
  const std::string path = dir.path() + "/h";
  EXPECT_FALSE(History::open(path)->has_value());
  auto site = rows(2);
  for (const auto& [time, rin] :
       {std::pair{kNow - 7 * kDay + 5 * kHour, 812}, {kNow - kDay - kHour, 640}, {kNow, 455}}) {
    site = rows(time == kNow ? 3 : 2, rin);
    site[0].periods[kPeriod24].out = rin / 2;
    ASSERT_TRUE(record_snapshot(path, site, time));
  }
  const History history = open(path);
  const auto lately = *history.snapshots(kNow - kDay - kHour, kNow);
  ASSERT_EQ(lately.size(), 2U);
  const auto totals = *history.totals(lately, kPeriod24);
  EXPECT_EQ(totals[0].rin, 640 + 641);
  EXPECT_EQ(totals[1].rin, 455 + 456 + 457);
  EXPECT_EQ(totals[1].out, 227);
  EXPECT_EQ(history.totals(lately, kPeriod60)->at(1).rin, 0);

  const auto series = *history.series(100, kPeriod24, kNow - 2 * kDay, kNow);
  ASSERT_EQ(series.size(), 2U);
  EXPECT_EQ(series[0].time, kNow - kDay - kHour);
  EXPECT_EQ(series[1].rin, 455);
  EXPECT_EQ(series[1].out, 227);

  EXPECT_EQ((*history.nearest(kNow - 100, kHour))->time, kNow);
  EXPECT_FALSE(history.nearest(kNow - kDay, kHour - 1)->has_value());
  const auto trend = [&](std::size_t row, std::int64_t now) {
    return history.trend(site[row], now)->text();
  };
  EXPECT_EQ(trend(0, kNow), "rin24: 455 now, 640 yesterday, 812 a week ago");
  EXPECT_EQ(trend(0, kNow + kDay), "rin24: 455 now, 455 yesterday");
  EXPECT_EQ(trend(2, kNow), "rin24: 457 now") << "it was no trade then";
}

TEST(Record, ThinsOutByHourAndDay) {
  const Keep keep{.hourly = 2 * kDay, .daily = 5 * kDay};
  const struct {
    const char* what;
    std::vector<std::int64_t> recorded, left;
  } cases[] = {
      {"the last of an hour", {0, 10, kHour - 1, kHour}, {kHour - 1, kHour}},
      {"the last of a day, once hours are too old",
       {0, 7 * kHour, 20 * kHour, 23 * kHour, 3 * kDay},
       {23 * kHour, 3 * kDay}},
      {"hours of a day of which a part is too old",
       {9 * kHour, 11 * kHour, 13 * kHour, 2 * kDay + 12 * kHour},
       {13 * kHour, 2 * kDay + 12 * kHour}},
      {"days that are too old", {0, kDay, 2 * kDay, 6 * kDay}, {kDay, 2 * kDay, 6 * kDay}},
      {"a clock that was set back", {30, 20}, {20}},
      {"two in a second", {30, 30}, {30}},
  };
  for (const auto& c : cases) {
    const TempDir dir;
    const std::string path = dir.path() + "/h";
    std::vector<std::int64_t> left;
    for (const std::int64_t time : c.left) left.push_back(kNow + time);
    for (const std::int64_t time : c.recorded) {
      ASSERT_TRUE(record_snapshot(path, rows(3), kNow + time, keep));
    }
    EXPECT_EQ(recorded_times(path), left) << c.what;
    whole_snapshots(path, 3);
  }
}

TEST(Record, DoesNotGrowByWhatItRemoves) {
  const TempDir dir;
  const std::string path = dir.path() + "/h";
  std::uintmax_t full = 0;
  for (int hour = 0; hour < 60; ++hour) {
    ASSERT_TRUE(record_snapshot(path, rows(100), kNow + hour * kHour, {kDay, kDay}));
    if (hour == 30) full = fs::file_size(path);
  }
  EXPECT_LE(fs::file_size(path), full + full / 10);
}

TEST(Record, TakesSpans) {
  const struct {
    const char* text;
    std::int64_t hourly, daily;  ///< 0: refused
  } cases[] = {
      {"14d,2y", 14 * kDay, 730 * kDay},
      {"1d,1d", kDay, kDay},
      {"1000y,1000y", 365000 * kDay, 365000 * kDay},
      {"", 0, 0},
      {"14d", 0, 0},
      {"14,2y", 0, 0},
      {"2y,14d", 0, 0},
      {"0d,2y", 0, 0},
      {"-1d,2y", 0, 0},
      {"1d,2y,", 0, 0},
      {"1d,1001y", 0, 0},
      {"1h,2y", 0, 0},
      {"1d,99999999999999999999d", 0, 0},
  };
  for (const auto& c : cases) {
    const auto keep = parse_keep(c.text);
    ASSERT_EQ(keep.has_value(), c.hourly != 0) << c.text;
    if (!keep) continue;
    EXPECT_EQ(keep->hourly, c.hourly) << c.text;
    EXPECT_EQ(keep->daily, c.daily) << c.text;
  }
}

TEST(Record, RefusesWhatItCannotUse) {
  constexpr std::size_t kPage = 4096, kUserVersionEnd = 63, kApplicationIdEnd = 71;
  const struct {
    const char* reason;
    std::function<void(std::string&)> spoil;
  } cases[] = {
      {"no SQLite database", [](std::string& bytes) { bytes.assign(8 * kPage, 'x'); }},
      {"is damaged", [](std::string& bytes) { bytes.resize(bytes.size() - kPage); }},
      {"is damaged",
       [](std::string& bytes) {
         bytes.replace(kPage, bytes.size(), bytes.size() - kPage, '\xFF');
       }},
      {"a newer toplistctl wrote it, in version 2; this one knows 1",
       [](std::string& bytes) { bytes[kUserVersionEnd] = 2; }},
      {"another program", [](std::string& bytes) { ++bytes[kApplicationIdEnd]; }},
  };
  for (const auto& c : cases) {
    const Site site;
    ASSERT_EQ(record(site), RunResult{});
    std::string bytes = site.read(kHistoryPath);
    c.spoil(bytes);
    site.write(kHistoryPath, bytes);
    const RunResult result = record(site);
    EXPECT_EQ(result.status, 2) << c.reason;
    EXPECT_NE(result.err.find(c.reason), std::string::npos) << result.err;
    EXPECT_NE(result.err.find(". Nothing was recorded. "), std::string::npos) << result.err;
    EXPECT_EQ(site.read(kHistoryPath), bytes) << c.reason;
    const auto opened = History::open(site.path(kHistoryPath));
    EXPECT_TRUE(!opened || !(*opened)->snapshots(0, kEver)) << c.reason;
  }
}

TEST(Record, TakesNothingFromASiteThatCannotBeReadWhole) {
  const struct {
    const char* named;
    std::function<void(const Site&)> spoil;
  } cases[] = {
      {"d/t/index", [](const Site& site) { site.remove("d/t/index"); }},
      {"d/t/index",
       [](const Site& site) { fs::resize_file(site.path("d/t/index"), 11 * 996 + 1); }},
      {"d/t/index", [](const Site& site) { fs::resize_file(site.path("d/t/index"), 9 * 996); }},
      {"d/t/sum", [](const Site& site) { site.replace_by_dir("d/t/sum"); }},
      {"d/t/sum",
       [](const Site& site) { site.write("d/t/sum", site.read("d/t/sum") + "|103|1|2"); }},
      {"d/h/t02.example.his", [](const Site& site) { site.replace_by_dir("d/h/t02.example.his"); }},
  };
  for (const auto& c : cases) {
    const Site site;
    c.spoil(site);
    const RunResult result = record(site);
    EXPECT_EQ(result.status, 2) << c.named;
    EXPECT_NE(result.err.find(c.named), std::string::npos) << result.err;
    EXPECT_FALSE(fs::exists(site.path(kHistoryPath))) << c.named;
  }
}

TEST(Record, SeveralAtOnceAllRecord) {
  const TempDir dir;
  const std::string path = dir.path() + "/h";
  std::vector<pid_t> children;
  for (int child = 0; child < 4; ++child) {
    children.push_back(start_child([&path, child] {
      for (int hour = child; hour < 40; hour += 4) {
        if (!record_snapshot(path, rows(20), kNow + hour * kHour)) return false;
      }
      return true;
    }));
  }
  for (const pid_t child : children) EXPECT_EQ(wait_for(child), 0);
  EXPECT_EQ(whole_snapshots(path, 20), 40U);
}

// The timer's signal ends the child wherever it is, as SIGKILL would.
TEST(Record, AKilledRecordingLeavesNothingOfItsSnapshot) {
  const TempDir dir;
  const std::string path = dir.path() + "/h";
  const auto some = rows(200);
  const Keep keep{.hourly = 2 * kSecondsPerYear, .daily = 2 * kSecondsPerYear};
  std::int64_t time = kNow;
  int killed = 0;
  for (int delay = 100; delay <= 12'000; delay += 400) {
    time += kHour;
    const int status = wait_for(start_child([&] {
      std::signal(SIGALRM, SIG_DFL);
      const itimerval timer{{}, {0, delay}};
      ::setitimer(ITIMER_REAL, &timer, nullptr);
      return record_snapshot(path, some, time, keep).has_value();
    }));
    if (!WIFSIGNALED(status)) continue;
    ++killed;
    if (const auto opened = History::open(path); !opened) {
      EXPECT_NE(opened.error().text().find("Run \"toplistctl record\""), std::string::npos);
    }
    time += kHour;  // a snapshot that was whole before the end stays
    const auto recorded = record_snapshot(path, some, time, keep);
    ASSERT_TRUE(recorded) << recorded.error().text();
    ASSERT_EQ(recorded_times(path).back(), time);
  }
  EXPECT_GT(killed, 0);
  whole_snapshots(path, 200);
}

TEST(Record, AFullDiskIsReportedAndLeavesTheSnapshotsAsTheyWere) {
  const Site site;
  const std::string path = site.path(kHistoryPath);
  for (int hour = 0; hour < 30; ++hour) {
    ASSERT_TRUE(
        record_snapshot(path, rows(12), kNow + hour * kHour, {kSecondsPerYear, kSecondsPerYear}));
  }
  int failed = 0;
  for (const int blocks : {1, 8, 16, static_cast<int>(fs::file_size(path) / 512)}) {
    const std::size_t before = whole_snapshots(path, 12);
    const RunResult result = record(site, {"--keep", "100y,100y"}, "-f " + std::to_string(blocks));
    const std::size_t after = whole_snapshots(path, 12);
    if (result.status == 0) {
      EXPECT_EQ(after, before + 1);
      continue;
    }
    ++failed;
    EXPECT_EQ(result.status, 2) << blocks;
    EXPECT_NE(result.err.find("File too large. Nothing was recorded."), std::string::npos)
        << result;
    EXPECT_EQ(after, before) << blocks;
  }
  EXPECT_GE(failed, 2);
}

TEST(Record, RootDoesNotFollowTheOwnersLinks) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root";
  constexpr uid_t kOwner = 65534;
  const TempDir elsewhere;  // root's, mode 0700
  const Site site;
  const std::string target = elsewhere.path() + "/target";
  fs::create_symlink(target, site.path(kHistoryPath));
  ASSERT_EQ(::chown(site.path("").c_str(), kOwner, kOwner), 0);
  for (const auto& entry : fs::recursive_directory_iterator(site.path(""))) {
    ASSERT_EQ(::lchown(entry.path().c_str(), kOwner, kOwner), 0);
  }
  const RunResult result = record(site, {"--site", site.path("")});
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("Permission denied"), std::string::npos) << result.err;
  EXPECT_FALSE(fs::exists(target));

  site.remove(kHistoryPath);
  ASSERT_EQ(record(site), RunResult{});
  struct stat status {};
  ASSERT_EQ(::stat(site.path(kHistoryPath).c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, kOwner);
}

}  // namespace
}  // namespace toplist::ctl
