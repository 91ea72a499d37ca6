// Whole runs of the built program in a temporary site.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "support/site.h"
#include "util/text.h"

namespace toplist::test {
namespace {

constexpr int kShownRanks = 12;
/// The page of the run before, which is longer than those that follow.
const std::string kOldPage(1000, 'o');
constexpr const char* kEmptyDigest = "da39a3ee5e6b4b0d3255bfef95601890afd80709";

const RunResult kQuiet{};  // status 0, and nothing said

std::string tag(const std::string& name, int rank) {
  std::array<char, 16> digits{};
  std::snprintf(digits.data(), digits.size(), "%03d", rank);
  return "%%" + name + "_" + digits.data() + "%%";
}

/// A template that lists the ids of the first ranks.
std::string ids_template(int ranks = kShownRanks) {
  std::string text;
  for (int rank = 0; rank < ranks; ++rank) text += tag("tid", rank) + "\n";
  return text;
}

/// What ids_template() gives for these trades: a rank that no trade has shows a blank.
std::string ids_page(const std::vector<int>& ids, std::size_t ranks = kShownRanks) {
  std::string page;
  for (const int id : ids) page += std::to_string(id) + "\n";
  for (std::size_t rank = ids.size(); rank < ranks; ++rank) page += " \n";
  return page;
}

const std::string kAllIds = ids_page({101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111, 112});

/// A line of the log; `subject` as it stands there, escapes included.
std::string log_line(const std::string& code, const std::string& subject,
                     const std::string& severity) {
  return "|<time>|toplist|" + code + "|" + subject + "|" + severity + "||||\n";
}

/// The line about a file that cannot be opened, which ends the run or not.
std::string ending(const std::string& subject) { return log_line("1", subject, "1"); }
std::string going_on(const std::string& subject) { return log_line("1", subject, "0"); }

const std::string kNotLoaded = log_line("10", "database was not fully loaded", "1");

/// Runs the program and expects it to end quietly and to write nothing but this to its log.
void expect_nothing_built(const Site& site, const std::string& log) {
  const auto before = site.contents();
  EXPECT_EQ(site.run(), kQuiet);
  EXPECT_EQ(site.contents(), before);
  EXPECT_EQ(site.log(), log);
}

/// Runs the program and expects it to end quietly and to log nothing.
void expect_quiet_run(const Site& site) {
  EXPECT_EQ(site.run(), kQuiet);
  EXPECT_EQ(site.log(), "");
}

/// A valid site with one toplist, whose page a run before has left.
struct SiteWithPage : Site {
  SiteWithPage() {
    add_toplist("top", ids_template());
    write("top.html", kOldPage);
  }
};

/// A site with three toplists that all have a page; the second one differs from case to case.
struct SiteWithThree : Site {
  explicit SiteWithThree(const ctl::Definition& second) {
    add_toplist("first", ids_template());
    add_definition(second);
    add_toplist("third", ids_template());
    for (const char* page : {"first.html", "second.html", "third.html"}) write(page, kOldPage);
  }
};

// --- a run in which nothing fails ---

/// Forty active trades with few different keys, a switched off one among them.
std::vector<Trade> tied_trades() {
  std::vector<Trade> trades(41);
  for (std::int32_t i = 0; i < 41; ++i) {
    Trade& trade = trades[static_cast<std::size_t>(i)];
    trade.id = 7 * i - 20;
    trade.domain = "tied" + std::to_string(i) + ".example";
    trade.periods[kPeriod60].uin = i % 4;
    trade.periods[kPeriod60].clk = i * 7 % 10;
    trade.periods[kPeriod99].out = i % 3;
    trade.periods[kPeriod99].rin = i % 5;
    trade.status = i == 17 ? 2 : 1;
  }
  return trades;
}

constexpr int kTiedRanks = 42;  // two more than there are trades

std::int32_t uin60(const Trade& trade) { return trade.periods[kPeriod60].uin; }

std::int32_t clk60(const Trade& trade) { return trade.periods[kPeriod60].clk; }

/// Less is ahead: so the sign.
std::int32_t ratio99(const Trade& trade) {
  const PeriodBlock& block = trade.periods[kPeriod99];
  return block.rin == 0 ? 0 : -(100 * block.out / block.rin);
}

/// Sorts as a toplist does: trades with more are ahead. Returns the toplist's page.
std::string rank_by(std::int32_t (&figure)(const Trade&), std::vector<Trade>& trades) {
  std::sort(trades.begin(), trades.end(),
            [&figure](const Trade& a, const Trade& b) { return figure(a) > figure(b); });
  std::vector<int> ids(trades.size());
  std::transform(trades.begin(), trades.end(), ids.begin(), [](const Trade& t) { return t.id; });
  return ids_page(ids, kTiedRanks);
}

// Equal keys come out as std::sort leaves them, each sort starting from the order of the one
// before; a toplist that is not built sorts nothing.
TEST(Run, RanksEachToplistFromTheOrderOfTheOneBuiltBefore) {
  std::vector<Trade> order = tied_trades();
  const Site site(order);
  site.add_toplist("visitors", ids_template(kTiedRanks), "2");
  site.add_toplist("edited", ids_template(kTiedRanks), "4");
  site.write("d/tl/edited.tpl", "changed since its check value was stored");
  site.add_toplist("ratio", ids_template(kTiedRanks), "57");

  std::erase_if(order, [](const Trade& trade) { return trade.status != 1; });
  const std::string visitors = rank_by(uin60, order);
  std::vector<Trade> sorted_by_the_edited_too = order;
  const std::string ratio = rank_by(ratio99, order);
  rank_by(clk60, sorted_by_the_edited_too);
  ASSERT_NE(rank_by(ratio99, sorted_by_the_edited_too), ratio) << "the trades show no difference";

  for (const char* run : {"first run", "second run"}) {
    SCOPED_TRACE(run);
    expect_quiet_run(site);
    EXPECT_EQ(site.read("visitors.html"), visitors);
    EXPECT_EQ(site.read("ratio.html"), ratio);
    EXPECT_FALSE(site.contents().contains("edited.html"));
  }
}

TEST(Run, ShowsTheTextsOfATradeAndOneAlternativeOfAColumn) {
  std::vector<Trade> trades = Site::default_trades();
  trades[0].columns[0] = "one;other";
  const Site site(trades);
  site.add_toplist("top", "%%tit_000%%\n%%dom_000%% %%lnk_000%%\n");
  expect_quiet_run(site);
  const std::string page = site.read("top.html"),
                    rest = "\nt01.example ?id=101&u=http://t01.example/\n";
  EXPECT_TRUE(page == "one" + rest || page == "other" + rest) << page;
}

TEST(Run, OnlyTheOneArgumentRunDoesAnything) {
  const SiteWithPage site;
  site.remove("d/h/t01.example.his");  // a run would log that
  const auto before = site.contents();
  const std::vector<std::vector<std::string>> refused = {
      {}, {"run", "run"}, {"runx"}, {"RUN"}, {""}};
  for (const auto& arguments : refused) {
    EXPECT_EQ(site.start({.arguments = arguments}), kQuiet);
    EXPECT_EQ(site.contents(), before);
    EXPECT_EQ(site.log(), "");
  }
}

// --- failures that end the run ---

TEST(Run, FailureThatEndsItLeavesThePagesAsTheyWere) {
  const struct {
    std::vector<const char*> removed, emptied;
    std::string log;
  } cases[] = {
      // The file behind is missing, too: nobody gets that far.
      {{"d/t/index", "d/tl/vantaig"}, {}, ending("d&#47;t&#47;index")},
      {{"d/tl/vantaig"}, {"d/t/index"}, kNotLoaded},
      {{"d/tl/vantaig", "d/tl/tl.a1"}, {}, ending("d&#47;tl&#47;vantaig")},
      {{"d/tl/tl.a1", "d/t/sum"}, {}, ending("d&#47;tl&#47;tl.a1")},
      {{"d/t/sum", "d/tl/tl"}, {}, ending("d&#47;t&#47;sum")},
      {{"d/h/t12.example.his", "d/t/sum"},
       {},
       going_on("d&#47;h&#47;t12.example.his") + ending("d&#47;t&#47;sum")},
      {{"d/tl/tl", "d/tl/tl.ext"}, {}, ending("d&#47;tl&#47;tl")},
      {{"d/tl/tl.ext"}, {}, ending("d&#47;tl&#47;tl.ext")},
      // Without toplists nobody looks for their settings.
      {{"d/tl/tl.ext"}, {"d/tl/tl"}, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.removed) + testing::PrintToString(c.emptied));
    const SiteWithPage site;
    for (const char* name : c.removed) site.remove(name);
    for (const char* name : c.emptied) site.write(name, "");
    expect_nothing_built(site, c.log);
  }
}

TEST(Run, EndsWithoutALogLineWhenNoTradeIsActive) {
  std::vector<Trade> trades = Site::default_trades();
  for (Trade& trade : trades) trade.status = trade.id % 2 == 0 ? 0 : 2;
  const Site site(trades);
  for (const char* name : {"d/h", "d/t/sum", "d/tl/tl"}) site.remove(name);
  expect_nothing_built(site, "");
  // The extra columns are read all the same.
  site.remove("d/tl/tl.a1");
  expect_nothing_built(site, ending("d&#47;tl&#47;tl.a1"));
}

TEST(Run, TenRecordsAreEnoughAndTheLastMayBeCutShort) {
  const SiteWithPage site;
  const std::string index = site.read("d/t/index");
  site.write("d/t/index", index.substr(0, 8964));
  expect_nothing_built(site, kNotLoaded);
  site.write("d/t/index", index.substr(0, 8965));
  EXPECT_EQ(site.run(), kQuiet);
  EXPECT_EQ(site.log(), kNotLoaded);
  EXPECT_EQ(site.read("top.html"), ids_page({101, 102, 103, 104, 105, 106, 107, 108, 109}));
}

TEST(Run, LogsInLocalTimeAndGoesOnWithoutHistories) {
  const SiteWithPage site;
  // 14 hours east of Greenwich: a log in universal time would name another hour.
  constexpr std::time_t kEastSeconds = 50400;
  const auto local_time = [] {
    const std::time_t time = std::time(nullptr) + kEastSeconds;
    std::array<char, 13> text{};
    std::strftime(text.data(), text.size(), "%Y%m%d%H%M", std::gmtime(&time));
    return std::string(text.data());
  };
  site.add_trade({.id = 113, .domain = "a'b!&c.example"});
  site.add_trade({.id = 114, .domain = "asleep.example", .status = 0});
  for (const std::string domain : {"t03.example", "a'b!&c.example", "asleep.example"}) {
    site.remove("d/h/" + domain + ".his");
  }

  const std::string before = local_time();
  EXPECT_EQ(site.start({.environment = {"TZ=XXX-14"}}), kQuiet);
  const std::string after = local_time();
  EXPECT_EQ(site.read("top.html"), kAllIds);
  EXPECT_EQ(site.log(), going_on("d&#47;h&#47;t03.example.his") +
                            going_on("d&#47;h&#47;a&#39;b&#33;&c.example.his"));
  const std::string logged = site.read("l/sys/sys.log").substr(1, 12);
  EXPECT_TRUE(before <= logged && logged <= after) << logged;
}

// --- failures of one toplist ---

TEST(Run, UnopenedTemplateOrOutputStopsTheToplistsBehindIt) {
  const std::string no_template = ending("d&#47;tl&#47;second.tpl");
  const std::string no_output = ending("nowhere&#47;second.html");
  const struct {
    ctl::Definition second;
    std::string log;
    bool third_built;
  } cases[] = {
      {{"second.tpl", "second.html", "1", "2", ""}, no_template, false},
      // A missing template hashes as an empty one, so only that check value has it opened.
      {{"second.tpl", "second.html", "1", "1", kEmptyDigest}, no_template, false},
      {{"second.tpl", "second.html", "1", "1", std::string(40, '0')}, "", true},
      {{"first.tpl", "nowhere/second.html", "1", "2", ""}, no_output, false},
      {{"first.tpl", "l/thumbs", "1", "2", ""}, ending("l&#47;thumbs"), false},
      {{"first.tpl", "d/t/sum/a", "1", "2", ""}, ending("d&#47;t&#47;sum&#47;a"), false},
      {{"first.tpl", "", "1", "2", ""}, ending(""), false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.second.template_name + " to " + c.second.output_path + " " + c.second.check);
    const SiteWithThree site(c.second);
    EXPECT_EQ(site.run(), kQuiet);
    EXPECT_EQ(site.log(), c.log);
    EXPECT_EQ(site.read("first.html"), kAllIds);
    EXPECT_EQ(site.read("second.html"), kOldPage);
    EXPECT_EQ(site.read("third.html"), c.third_built ? kAllIds : kOldPage);
  }
}

// --- the abnormal stop ---

TEST(Run, StrayMarkStopsItAbnormally) {
  constexpr struct {
    const char* text;
    const char* line;
  } kCases[] = {
      {"fine\n\nnow 50%%\n", "line 3"},
      // The first trade's title ends in the mark.
      {"fine\n%%tit_000%%\n", "line 2"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    const SiteWithThree site({"second.tpl", "second.html", "1", "2", ""});
    site.write("d/tl/second.tpl", c.text);
    std::string columns = site.read("d/tl/tl.a1");
    columns.replace(columns.find("Title 01"), 8, "up 100%%");
    site.write("d/tl/tl.a1", columns);

    const RunResult result = site.run();
    EXPECT_EQ(result.signal, SIGABRT) << result;
    EXPECT_EQ(result.out, "");
    for (const char* place : {"d/tl/second.tpl", c.line}) {
      EXPECT_NE(result.err.find(place), std::string::npos) << place << " in " << result.err;
    }
    EXPECT_EQ(site.log(), "");
    EXPECT_EQ(site.read("first.html"), kAllIds);
    EXPECT_EQ(site.read("second.html"), kOldPage);
    EXPECT_EQ(site.read("third.html"), kOldPage);
  }
}

// --- which trades are shown ---

TEST(Run, ThumbnailsAreRequiredWhenTheSixthLineIsZeroOrMissing) {
  const std::string with_thumbnail = ids_page({102, 105});
  const struct {
    const char* configuration;
    std::string page;
  } cases[] = {
      {"l/thumbs/\n\n\n\n0\n0\n0\n", with_thumbnail},
      {"l/thumbs/\n", with_thumbnail},
      {"", with_thumbnail},  // the first line counts as "0" too, and that directory exists
      {"no/such/\n\n\n\n\n1\n0\n", kAllIds},
      {"no/such/\n\n\n\n\n00\n0\n", kAllIds},
      {"no/such/\n\n\n\n\n0\r\n0\n", kAllIds},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.configuration);
    const SiteWithPage site;
    site.write("d/tl/vantaig", c.configuration);
    site.make_dir("0");
    for (const std::string dir : {"l/thumbs/", "0/"}) {
      for (const char* name : {"t02.example.jpg", "t05.example.jpg", "t07.example.JPG"}) {
        site.write(dir + name, "picture");
      }
    }
    expect_quiet_run(site);
    EXPECT_EQ(site.read("top.html"), c.page);
  }
}

std::string list_name(std::size_t i) { return "list" + std::to_string(i); }

TEST(Run, SettingsDecideWhichTradesAToplistShows) {
  const struct {
    std::vector<const char*> settings;
    std::string page;
  } cases[] = {
      {{"rin60=100", "uin60=20"}, ids_page({102, 103})},
      {{"cprod=100"}, ids_page({105, 106, 107, 108, 109, 110, 111, 112})},
      {{"domains=t02.example, t04.example ", "domains=t09.example"}, ids_page({102, 104, 109})},
      {{"domains=t02.example,t03.example", "skipdomains=t03.example"}, ids_page({102})},
      {{"group=gold", "group=fine trades\r\n", "rin60=20"}, ids_page({101, 104, 106})},
      {{"group=nobody"}, kAllIds},
  };
  const Site site;
  site.write("d/gr/gold", ctl::encode_group("gold", std::array{106, 101, 112, 999}));
  site.write("d/gr/finetrades", ctl::encode_group("fine trades", std::array{104}));
  site.write("d/gr/nobody", ctl::encode_group("nobody", {}));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const std::string name = list_name(i);
    site.add_toplist(name, ids_template());
    for (const char* setting : cases[i].settings) site.add_setting(name, setting);
  }
  expect_quiet_run(site);
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(site.read(list_name(i) + ".html"), cases[i].page)
        << testing::PrintToString(cases[i].settings);
  }
}

TEST(Run, MissingGroupIsLoggedForToplistsThatAreBuilt) {
  const SiteWithPage site;
  site.add_toplist("edited", ids_template());
  site.write("d/tl/edited.tpl", "changed since its check value was stored\n");
  site.add_setting("edited", "group=unread");
  site.add_setting("top", "group=lost");
  site.add_setting("top", "rin60=100");
  EXPECT_EQ(site.run(), kQuiet);
  EXPECT_EQ(site.log(), going_on("d&#47;gr&#47;lost"));
  EXPECT_EQ(site.read("top.html"), ids_page({101, 102, 103}));
}

// --- the surroundings of a run ---

// A thumbnail directory that cannot be opened is told on standard output, a stray mark on standard
// error. Closed descriptors lose it: it must not land in a file of the site.
TEST(Run, SaysWhatItHasToSayOnStandardDescriptorsOnly) {
  const std::string line = going_on("d&#47;h&#47;t01.example.his");
  const std::string three_lines = line + line + line;
  for (const std::vector<int>& closed : {std::vector<int>{}, {0}, {1}, {2}, {0, 1, 2}}) {
    SCOPED_TRACE(testing::PrintToString(closed));
    const SiteWithPage site;
    site.remove("d/h/t01.example.his");
    EXPECT_EQ(site.start({.closed = closed}), kQuiet);
    EXPECT_EQ(site.log(), line);
    EXPECT_EQ(site.read("top.html"), kAllIds);

    site.write("d/tl/vantaig", "l/thumbs/\n\n\n\n0\n0\n0\n");
    site.remove("l/thumbs");
    auto before = site.contents();
    const bool told = std::count(closed.begin(), closed.end(), 1) == 0;
    const RunResult result = site.start({.closed = closed});
    EXPECT_EQ(result, RunResult{.out = result.out});
    EXPECT_EQ(contains(result.out, "Unable to open directory <b>l/thumbs/</b>"), told);
    EXPECT_EQ(site.contents(), before);

    site.write("d/tl/vantaig", ctl::encode_harvest_file({}));
    site.add_toplist("top", "stray %%\n");
    before = site.contents();
    EXPECT_EQ(site.start({.closed = closed}).signal, SIGABRT);
    EXPECT_EQ(site.contents(), before);
    EXPECT_EQ(site.log(), three_lines);
  }
}

TEST(Run, LosesItsLogLinesWithoutALogFolder) {
  const SiteWithPage site;
  site.remove("l/sys");
  site.remove("d/h/t01.example.his");
  EXPECT_EQ(site.run(), kQuiet);
  EXPECT_EQ(site.read("top.html"), kAllIds);
  EXPECT_FALSE(site.contents().contains("l/sys"));
}

}  // namespace
}  // namespace toplist::test
