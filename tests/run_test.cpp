// Whole runs of the built program in a temporary site.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/site.h"

namespace toplist::test {
namespace {

constexpr int kShownRanks = 12;
constexpr const char* kOldPage = "the page of the run before\n";
constexpr const char* kEmptyDigest = "da39a3ee5e6b4b0d3255bfef95601890afd80709";

const RunResult kQuiet{};  // status 0, and nothing said

std::string tag(const std::string& name, int rank) {
  std::array<char, 16> digits{};
  std::snprintf(digits.data(), digits.size(), "%03d", rank);
  return "%%" + name + "_" + digits.data() + "%%";
}

/// A template that lists the ids of the first twelve ranks.
std::string ids_template() {
  std::string text;
  for (int rank = 0; rank < kShownRanks; ++rank) text += tag("tid", rank) + "\n";
  return text;
}

/// What ids_template() gives for these trades: a rank that no trade has shows a blank.
std::string ids_page(const std::vector<int>& ids) {
  std::string page;
  for (const int id : ids) page += std::to_string(id) + "\n";
  for (std::size_t rank = ids.size(); rank < kShownRanks; ++rank) page += " \n";
  return page;
}

/// The ids from `first` to `last`.
std::vector<int> ids(int first, int last) {
  std::vector<int> all;
  for (int id = first; id <= last; ++id) all.push_back(id);
  return all;
}

const std::string kAllIds = ids_page(ids(101, 112));

/// A line of the log; `subject` as it stands there, escapes included.
std::string log_line(const std::string& code, const std::string& subject,
                     const std::string& severity) {
  return "|<time>|toplist|" + code + "|" + subject + "|" + severity + "||||\n";
}

/// Runs the program and expects it to end quietly and to write nothing but its log.
void expect_nothing_built(const Site& site) {
  const auto before = site.contents();
  EXPECT_EQ(site.run(), kQuiet);
  EXPECT_EQ(site.contents(), before);
}

void require_thumbnails(const Site& site) {
  site::HarvestFile configuration;
  configuration.thumbnail_optional = "0";
  site.write("d/tl/vantaig", site::encode_harvest_file(configuration));
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
  explicit SiteWithThree(const site::Definition& second) {
    add_toplist("first", ids_template());
    add_definition(second);
    add_toplist("third", ids_template());
    for (const char* page : {"first.html", "second.html", "third.html"}) write(page, kOldPage);
  }
};

// --- a run in which nothing fails ---

/// Forty active trades with few different keys, a switched off one among them.
std::vector<Trade> tied_trades() {
  std::vector<Trade> trades;
  for (std::int32_t i = 0; i < 41; ++i) {
    const std::string number = std::to_string(i);
    Trade trade{.id = 7 * i - 20, .domain = "tied" + number + ".example"};
    trade.periods[kPeriod60].uin = i % 4;
    trade.periods[kPeriod60].clk = i * 7 % 10;
    trade.periods[kPeriod24].ctt = -i;
    trade.periods[kPeriod07].cef = 1000 * i;
    trade.periods[kPeriod99].out = i % 3;
    trade.periods[kPeriod99].rin = i % 5;
    trade.columns = {"Title " + number, "About " + number, "p" + number, "Category " + number};
    trade.status = i == 17 ? 2 : 1;
    trades.push_back(trade);
  }
  return trades;
}

const std::array<std::string, 11> kShownTags = {"tid",   "dom",   "lnk",   "tit",   "des",  "img",
                                                "att00", "uin60", "ctt24", "cef07", "out99"};

/// The values of kShownTags for a trade.
std::array<std::string, 11> shown_values(const Trade& trade) {
  const std::string id = std::to_string(trade.id);
  return {id,
          trade.domain,
          "?id=" + id + "&u=http://" + trade.domain + "/",
          trade.columns[0],
          trade.columns[1],
          trade.columns[2],
          trade.columns[3],
          std::to_string(trade.periods[kPeriod60].uin),
          std::to_string(trade.periods[kPeriod24].ctt),
          std::to_string(trade.periods[kPeriod07].cef),
          std::to_string(trade.periods[kPeriod99].out)};
}

std::string joined(const std::array<std::string, 11>& values) {
  std::string line = "<li>";
  for (const std::string& value : values) line += value + " - ";
  return line + "</li>\r\n";
}

constexpr int kTiedRanks = 42;  // two more than there are trades

std::string tied_template() {
  std::string text = "<ul>\n";
  for (int rank = 0; rank < kTiedRanks; ++rank) {
    std::array<std::string, 11> tags;
    for (std::size_t i = 0; i < tags.size(); ++i) tags[i] = tag(kShownTags[i], rank);
    text += joined(tags);
  }
  return text + "</ul>";
}

std::string tied_page(const std::vector<Trade>& ranked) {
  std::array<std::string, 11> blanks;
  blanks.fill(" ");
  std::string page = "<ul>\n";
  for (const Trade& trade : ranked) page += joined(shown_values(trade));
  for (std::size_t rank = ranked.size(); rank < kTiedRanks; ++rank) page += joined(blanks);
  return page + "</ul>\n";
}

bool more_uin60(const Trade& a, const Trade& b) {
  return a.periods[kPeriod60].uin > b.periods[kPeriod60].uin;
}

bool more_clk60(const Trade& a, const Trade& b) {
  return a.periods[kPeriod60].clk > b.periods[kPeriod60].clk;
}

bool less_out99_per_rin99(const Trade& a, const Trade& b) {
  const auto ratio = [](const PeriodBlock& block) {
    if (block.rin == 0) return 0;
    const auto quotient = static_cast<long double>(block.out) / static_cast<long double>(block.rin);
    return static_cast<int>(quotient * 100);
  };
  return ratio(a.periods[kPeriod99]) < ratio(b.periods[kPeriod99]);
}

// Equal keys come out as std::sort leaves them, each sort starting from the order of the one
// before; a toplist that is not built sorts nothing.
TEST(Run, RanksEachToplistFromTheOrderOfTheOneBuiltBefore) {
  std::vector<Trade> order = tied_trades();
  const Site site(order);
  site.add_toplist("visitors", tied_template(), "2");
  site.add_toplist("edited", tied_template(), "4");
  site.write("d/tl/edited.tpl", tied_template() + "changed since its check value was stored");
  site.add_toplist("ratio", tied_template(), "57");

  std::erase_if(order, [](const Trade& trade) { return trade.status != 1; });
  std::sort(order.begin(), order.end(), more_uin60);
  const std::string visitors = tied_page(order);
  std::vector<Trade> sorted_by_the_edited_too = order;
  std::sort(order.begin(), order.end(), less_out99_per_rin99);
  const std::string ratio = tied_page(order);
  std::sort(sorted_by_the_edited_too.begin(), sorted_by_the_edited_too.end(), more_clk60);
  std::sort(sorted_by_the_edited_too.begin(), sorted_by_the_edited_too.end(), less_out99_per_rin99);
  ASSERT_NE(tied_page(sorted_by_the_edited_too), ratio) << "the trades show no difference";

  for (const char* run : {"first run", "second run"}) {
    SCOPED_TRACE(run);
    EXPECT_EQ(site.run(), kQuiet);
    EXPECT_EQ(site.log(), "");
    EXPECT_EQ(site.read("visitors.html"), visitors);
    EXPECT_EQ(site.read("ratio.html"), ratio);
    EXPECT_FALSE(site.contents().contains("edited.html"));
  }
}

TEST(Run, OnlyTheOneArgumentRunDoesAnything) {
  const SiteWithPage site;
  site.remove("d/h/t01.example.his");  // a run would log that
  const auto before = site.contents();
  const std::vector<std::vector<std::string>> refused = {{},      {"run", "run"}, {"runx"},  {"ru"},
                                                         {"RUN"}, {""},           {"--help"}};
  for (const auto& arguments : refused) {
    EXPECT_EQ(site.start({.arguments = arguments}), kQuiet);
    EXPECT_EQ(site.contents(), before);
    EXPECT_EQ(site.log(), "");
  }
}

// --- failures that end the run ---

struct EndingCase {
  std::vector<const char*> removed;
  std::vector<const char*> emptied;
  std::string log;
};

TEST(Run, FailureThatEndsItLeavesThePagesAsTheyWere) {
  const std::string not_loaded = log_line("10", "database was not fully loaded", "1");
  const EndingCase cases[] = {
      {{"d"}, {}, log_line("1", "d&#47;t&#47;index", "1")},
      {{"d/t/index"}, {}, log_line("1", "d&#47;t&#47;index", "1")},
      {{}, {"d/t/index"}, not_loaded},
      {{"d/tl/vantaig"}, {}, log_line("1", "d&#47;tl&#47;vantaig", "1")},
      {{"d/tl/tl.a1"}, {}, log_line("1", "d&#47;tl&#47;tl.a1", "1")},
      {{"d/t/sum"}, {}, log_line("1", "d&#47;t&#47;sum", "1")},
      {{"d/h/t12.example.his", "d/t/sum"},
       {},
       log_line("1", "d&#47;h&#47;t12.example.his", "0") + log_line("1", "d&#47;t&#47;sum", "1")},
      {{"d/tl/tl", "d/tl/tl.ext"}, {}, log_line("1", "d&#47;tl&#47;tl", "1")},
      {{"d/tl/tl.ext"}, {}, log_line("1", "d&#47;tl&#47;tl.ext", "1")},
      // Without toplists nobody looks for their settings.
      {{"d/tl/tl.ext"}, {"d/tl/tl"}, ""},
  };
  for (const EndingCase& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.removed) + testing::PrintToString(c.emptied));
    const SiteWithPage site;
    for (const char* name : c.removed) site.remove(name);
    for (const char* name : c.emptied) site.write(name, "");
    expect_nothing_built(site);
    EXPECT_EQ(site.log(), c.log);
  }
}

TEST(Run, EndsWithoutALogLineWhenNoTradeIsActive) {
  std::vector<Trade> trades = Site::default_trades();
  for (Trade& trade : trades) trade.status = trade.id % 2 == 0 ? 0 : 2;
  const Site site(trades);
  for (const char* name : {"d/h", "d/t/sum", "d/tl/tl"}) site.remove(name);
  expect_nothing_built(site);
  EXPECT_EQ(site.log(), "");
  // The extra columns are read all the same.
  site.remove("d/tl/tl.a1");
  expect_nothing_built(site);
  EXPECT_EQ(site.log(), log_line("1", "d&#47;tl&#47;tl.a1", "1"));
}

// Twenty fields are two toplists and a third one's template: more templates than outputs.
TEST(Run, BuildsNothingWhenTemplatesAndOutputsDifferInNumber) {
  const SiteWithPage site;
  site.add_toplist("more", ids_template());
  site.write("d/tl/tl", site.read("d/tl/tl") + "list|third.tpl|");
  site.remove("d/tl/tl.ext");
  expect_nothing_built(site);
  EXPECT_EQ(site.log(), "");
}

struct DatabaseCase {
  std::size_t bytes;
  int last_id;  ///< 0: too few records
};

TEST(Run, TenRecordsAreEnoughAndTheLastMayBeCutShort) {
  constexpr DatabaseCase kCases[] = {{8964, 0}, {8965, 109}, {9960, 110}, {9961, 110}};
  for (const DatabaseCase& c : kCases) {
    SCOPED_TRACE(c.bytes);
    const SiteWithPage site;
    site.write("d/t/index", site.read("d/t/index").substr(0, c.bytes));
    EXPECT_EQ(site.run(), kQuiet);
    EXPECT_EQ(site.log(),
              c.last_id == 0 ? log_line("10", "database was not fully loaded", "1") : "");
    EXPECT_EQ(site.read("top.html"), c.last_id == 0 ? kOldPage : ids_page(ids(101, c.last_id)));
  }
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
  Trade odd{.id = 113, .domain = "a'b!&c.example"};
  site.add_trade(odd);
  odd = {.id = 114, .domain = "asleep.example", .status = 0};
  site.add_trade(odd);
  for (const char* domain : {"t03.example", "a'b!&c.example", "asleep.example"}) {
    site.remove(std::string("d/h/") + domain + ".his");
  }

  const std::string before = local_time();
  EXPECT_EQ(site.start({.timezone = "XXX-14"}), kQuiet);
  const std::string after = local_time();
  EXPECT_EQ(site.read("top.html"), kAllIds);
  EXPECT_EQ(site.log(), log_line("1", "d&#47;h&#47;t03.example.his", "0") +
                            log_line("1", "d&#47;h&#47;a&#39;b&#33;&c.example.his", "0"));
  const std::string logged = site.read("l/sys/sys.log").substr(1, 12);
  EXPECT_TRUE(before <= logged && logged <= after) << logged;
}

// --- failures of one toplist ---

struct SecondCase {
  site::Definition second;
  std::string log;
  bool third_built;
};

TEST(Run, UnopenedTemplateOrOutputStopsTheToplistsBehindIt) {
  const std::string template_line = log_line("1", "d&#47;tl&#47;second.tpl", "1");
  const SecondCase cases[] = {
      {{"second.tpl", "second.html", "1", "2", ""}, template_line, false},
      // A missing template hashes as an empty one, so only that check value has it opened.
      {{"second.tpl", "second.html", "1", "1", kEmptyDigest}, template_line, false},
      {{"second.tpl", "second.html", "1", "1", std::string(40, '0')}, "", true},
      {{"first.tpl", "nowhere/second.html", "1", "2", ""},
       log_line("1", "nowhere&#47;second.html", "1"),
       false},
      {{"first.tpl", "l/thumbs", "1", "2", ""}, log_line("1", "l&#47;thumbs", "1"), false},
      {{"first.tpl", "", "1", "2", ""}, log_line("1", "", "1"), false},
  };
  for (const SecondCase& c : cases) {
    SCOPED_TRACE(c.second.template_name + " to " + c.second.output_path + " " + c.second.check);
    const SiteWithThree site(c.second);
    EXPECT_EQ(site.run(), kQuiet);
    EXPECT_EQ(site.log(), c.log);
    EXPECT_EQ(site.read("first.html"), kAllIds);
    EXPECT_EQ(site.read("second.html"), kOldPage);
    EXPECT_EQ(site.read("third.html"), c.third_built ? kAllIds : kOldPage);
  }
}

struct ModeCase {
  const char* mode;
  std::string check;
  bool built;
};

TEST(Run, BuildModeAndCheckValueDecideWhichToplistsAreBuilt) {
  const std::string digest = "71e23e9e61dd4032ec0d400b1e5354cc09e6eb05";
  const ModeCase cases[] = {
      {"1", digest, true},        {"1", "71E23E9E61DD4032EC0D400B1E5354CC09E6EB05", false},
      {"1", digest + "0", false}, {"1", digest.substr(0, 39), false},
      {"1", "", false},           {"2", "", true},
      {"2", digest, true},        {"0", digest, false},
      {"3", digest, false},       {"12", digest, false},
      {"", digest, false},        {" 1", digest, false},
  };
  const Site site;
  site.write("d/tl/same.tpl", "first %%tid_000%%\n");
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const std::string output = std::to_string(i) + ".html";
    site.add_definition({"same.tpl", site.path(output), "1", cases[i].mode, cases[i].check});
    site.write(output, kOldPage);
  }
  site.write("d/tl/tl", site.read("d/tl/tl") + "list|same.tpl|0|without-mode.html|1");
  EXPECT_EQ(site.run(), kQuiet);
  EXPECT_EQ(site.log(), "");
  EXPECT_FALSE(site.contents().contains("without-mode.html"));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(site.read(std::to_string(i) + ".html"), cases[i].built ? "first 101\n" : kOldPage)
        << cases[i].mode << ' ' << cases[i].check;
  }
}

struct DirectoryCase {
  const char* path;
  const char* page;
};

// A directory opens as a file without contents: no failure, and nothing to log.
TEST(Run, DirectoryInPlaceOfAFileCountsAsAnEmptyFile) {
  constexpr DirectoryCase kCases[] = {
      {"l/unused", "103 100 1002 Title 03\n"},
      {"d/h/t03.example.his", "103 100 0 Title 03\n"},
      {"d/t/sum", "103 0 1002 Title 03\n"},
      {"d/tl/tl.a1", "103 100 1002 \n"},
      {"d/gr/third", "102 110 1001 Title 02\n"},
      {"d/tl/tl.ext", "101 120 1000 Title 01\n"},
      {"d/tl/page.tpl", ""},
  };
  for (const DirectoryCase& c : kCases) {
    SCOPED_TRACE(c.path);
    const Site site;
    site.write("d/tl/page.tpl", tag("tid", 0) + " " + tag("rin60", 0) + " " + tag("rin99", 0) +
                                    " " + tag("tit", 0) + "\n");
    site.add_definition({"page.tpl", "page.html", "1", "2", ""});
    site.add_setting("page", "skipdomains=t01.example");
    site.add_setting("page", "group=third");
    site.write("d/gr/third", site::encode_group("third", std::array{103}));
    site.write("page.html", kOldPage);

    site.replace_by_dir(c.path);
    EXPECT_EQ(site.run(), kQuiet);
    EXPECT_EQ(site.log(), "");
    EXPECT_EQ(site.read("page.html"), c.page);
  }
}

// --- the abnormal stop ---

struct StrayCase {
  const char* text;
  const char* line;
  const char* column;
};

TEST(Run, StrayMarkStopsItAbnormally) {
  constexpr StrayCase kCases[] = {
      {"fine\n\nnow 50%%\n", "line 3", "column 7"},
      {"fine\n50%%", "line 2", "column 3"},
      {"%%tid_00%%\n", "line 1", "column 1"},
      {"%%12345678\nfine\n", "line 1", "column 1"},
      // Read as a long tag of an unknown name, which leaves its last two characters.
      {"%%%%%%%%%%%%%\n", "line 1", "column 12"},
      // The first trade's title ends in the mark.
      {"fine\n%%tit_000%%\n", "line 2", "column"},
  };
  for (const StrayCase& c : kCases) {
    SCOPED_TRACE(c.text);
    const SiteWithThree site({"second.tpl", "second.html", "1", "2", ""});
    site.write("d/tl/second.tpl", c.text);
    std::string columns = site.read("d/tl/tl.a1");
    columns.replace(columns.find("Title 01"), 8, "up 100%%");
    site.write("d/tl/tl.a1", columns);

    const RunResult result = site.run();
    EXPECT_EQ(result.signal, SIGABRT) << result;
    EXPECT_EQ(result.out, "");
    for (const char* place : {"d/tl/second.tpl", c.line, c.column}) {
      EXPECT_NE(result.err.find(place), std::string::npos) << place << " in " << result.err;
    }
    EXPECT_EQ(site.log(), "");
    EXPECT_EQ(site.read("first.html"), kAllIds);
    EXPECT_EQ(site.read("second.html"), kOldPage);
    EXPECT_EQ(site.read("third.html"), kOldPage);
  }
}

// --- templates ---

struct TemplateCase {
  std::string text;
  std::string page;
};

TEST(Run, CopiesWhatIsNoTag) {
  using namespace std::string_literals;
  const TemplateCase cases[] = {
      {"", ""},
      {"\n\nlast line without an end", "\n\nlast line without an end\n"},
      {"<tlxt>\nall %%\nin a block\n</tlxt>\n", ""},
      {"kept\nopen <tlxt> for ever\n50%%\n", "kept\n"},
      {"a</tlxt>\nkept\n<tlxt> and </tlxt>\nkept too\n", "kept\nkept too\n"},
      {"%%tid_000%%\r\n\r\n", "101\r\n\r\n"},
      {"\xE4\xF6 \x80\xFF\xC3\xA9 \0 |;<>&\n"s, "\xE4\xF6 \x80\xFF\xC3\xA9 \0 |;<>&\n"s},
      {"50% and 5 %\n", "50% and 5 %\n"},
      // Eleven characters from the mark on, but no tag: it and all behind it stay as they are.
      {"%%tid_0000x\n%%tid_000%% %%tid_001%%\n", "%%tid_0000x\n101 %%tid_001%%\n"},
  };
  const Site site;
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    site.add_toplist(std::to_string(i), cases[i].text);
    site.write(std::to_string(i) + ".html", kOldPage);
  }
  EXPECT_EQ(site.run(), kQuiet);
  EXPECT_EQ(site.log(), "");
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(site.read(std::to_string(i) + ".html"), cases[i].page) << cases[i].text;
  }
}

TEST(Run, AlternativesOfATradeStayInStep) {
  std::vector<Trade> trades = Site::default_trades();
  std::string text;
  std::string firsts;
  std::string seconds;
  int rank = 0;
  for (Trade& trade : trades) {
    const std::string id = std::to_string(trade.id);
    const std::string about = std::string("about ").append(id).append(";About ").append(id);
    trade.columns = {"T;t", about, ";one", "one;"};
    for (const char* name : {"tit", "des", "img", "att00"})
      text.append(tag(name, rank)).append("-");
    text += "\n";
    firsts.append("T-about ").append(id).append("--one-\n");
    seconds.append("t-About ").append(id).append("-one-one-\n");
    ++rank;
  }
  const Site site(trades);
  site.add_toplist("top", text);

  // All picks of one second are alike. A run across the change of the second may mix them.
  const auto in_step = [&] {
    EXPECT_EQ(site.run(), kQuiet);
    const std::string page = site.read("top.html");
    return page == firsts || page == seconds;
  };
  EXPECT_TRUE(in_step() || in_step() || in_step()) << site.read("top.html");
  EXPECT_EQ(site.log(), "");
}

// --- thumbnails ---

struct ThumbnailCase {
  const char* configuration;
  bool required;
};

TEST(Run, ThumbnailsAreRequiredWhenTheSixthLineIsZeroOrMissing) {
  constexpr ThumbnailCase kCases[] = {
      {"l/thumbs/\n\n\n\n0\n0\n0\n", true},
      {"l/thumbs/\n\n\n\n0\n0", true},
      {"l/thumbs/\n\n\n\n0\n", true},
      {"l/thumbs/\n", true},
      {"", true},  // the first line counts as "0" too, and that directory exists
      {"l/thumbs/\n\n\n\n0\n1\n0\n", false},
      {"l/thumbs/\n\n\n\n0\n0\r\n0\n", false},
      {"l/thumbs/\n\n\n\n0\n00\n0\n", false},
      {"l/thumbs/\n\n\n\n0\n\n0\n", false},
      {"no/such/\n\n\n\n\n1\n0\n", false},
  };
  for (const ThumbnailCase& c : kCases) {
    SCOPED_TRACE(c.configuration);
    const SiteWithPage site;
    site.write("d/tl/vantaig", c.configuration);
    site.add_toplist("wanted", ids_template());
    site.add_setting("wanted", "domains=t01.example,t02.example");
    for (const std::string dir : {"l/thumbs/", "0/"}) {
      for (const char* name : {"t02.example.jpg", "t05.example.jpg", "t07.example.JPG"}) {
        site.make_dir(dir);
        site.write(dir + name, "picture");
      }
    }
    EXPECT_EQ(site.run(), kQuiet);
    EXPECT_EQ(site.log(), "");
    EXPECT_EQ(site.read("top.html"), c.required ? ids_page({102, 105}) : kAllIds);
    EXPECT_EQ(site.read("wanted.html"), ids_page(c.required ? ids(102, 102) : ids(101, 102)));
  }
}

// --- filters ---

struct FilterCase {
  std::vector<const char*> settings;
  std::vector<int> shown;
};

TEST(Run, SettingsDecideWhichTradesAToplistShows) {
  const std::vector<int> all = ids(101, 112);
  const FilterCase cases[] = {
      {{}, all},
      {{"rin60=100"}, ids(101, 103)},
      {{"rin60=100", "uin60=20"}, {102, 103}},
      {{"rin60=100", "rin60=90 or so"}, ids(101, 104)},
      {{"rin60=100", "rin60=-1"}, all},
      {{"rin60=-2"}, all},
      {{"cprod=100"}, ids(105, 112)},
      {{"tprod=200"}, ids(101, 104)},
      {{"clk60=1", "rin99=5000", "RIN60=5000", "rin60"}, all},  // no such settings
      {{"domains=t02.example, t04.example ,nobody.example"}, {102, 104}},
      {{"domains=t02.example", "domains=t09.example"}, {102, 109}},
      {{"domains=ab,cd"}, all},
      {{"domains=nobody.example"}, {}},
      {{"skipdomains=t01.example\r\nt03.example\r\n"},
       {102, 104, 105, 106, 107, 108, 109, 110, 111, 112}},
      {{"domains=t02.example,t03.example", "skipdomains=t03.example,T02.example"}, {102}},
      {{"group=*"}, all},
      {{"group="}, all},
      {{"group= \r\n"}, all},
      {{"group=gold"}, {101, 106, 112}},
      {{"group=fine trades\r\n"}, {104}},
      {{"group=gold", "group=fine trades", "rin60=20"}, {101, 104, 106}},
      {{"group=nobody"}, all},
  };
  const Site site;
  site.write("d/gr/gold", site::encode_group("gold", std::array{106, 101, 112, 999}));
  site.write("d/gr/finetrades", site::encode_group("fine trades", std::array{104}));
  site.write("d/gr/nobody", site::encode_group("nobody", {}));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const std::string name = "list" + std::to_string(i);
    site.add_toplist(name, ids_template());
    for (const char* setting : cases[i].settings) site.add_setting(name, setting);
  }
  EXPECT_EQ(site.run(), kQuiet);
  EXPECT_EQ(site.log(), "");
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(site.read("list" + std::to_string(i) + ".html"), ids_page(cases[i].shown))
        << "list " << i << ": " << testing::PrintToString(cases[i].settings);
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
  EXPECT_EQ(site.log(), log_line("1", "d&#47;gr&#47;lost", "0"));
  EXPECT_EQ(site.read("top.html"), ids_page({101, 102, 103}));
}

// --- the surroundings of a run ---

const std::vector<int> kClosed[] = {{}, {0}, {1}, {2}, {0, 1, 2}};

const std::string kThumbsFragment =
    "<div align=center>\n"
    "<font style=\"font:normal 8pt arial;\";><font style=\"color:red;\"><b>Error</b></font><br>\n"
    "Unable to open directory <b>l/thumbs/</b><br>\n"
    "Please check file permissions and try again.<br>\n</font>\n</div>\n</body>\n</html>";

TEST(Run, WorksWithClosedStandardDescriptors) {
  for (const auto& closed : kClosed) {
    SCOPED_TRACE(testing::PrintToString(closed));
    const SiteWithPage site;
    site.remove("d/h/t01.example.his");
    EXPECT_EQ(site.start({.closed = closed}), kQuiet);
    EXPECT_EQ(site.log(), log_line("1", "d&#47;h&#47;t01.example.his", "0"));
    EXPECT_EQ(site.read("top.html"), kAllIds);
  }
}

// A thumbnail directory that cannot be opened is told on standard output, a stray mark on standard
// error. Closed descriptors lose it: it must not land in a file of the site.
TEST(Run, SaysWhatItHasToSayOnStandardDescriptorsOnly) {
  for (const auto& closed : kClosed) {
    SCOPED_TRACE(testing::PrintToString(closed));
    const SiteWithPage site;
    require_thumbnails(site);
    site.remove("l/thumbs");
    auto before = site.contents();
    const bool told = std::count(closed.begin(), closed.end(), 1) == 0;
    EXPECT_EQ(site.start({.closed = closed}), RunResult{.out = told ? kThumbsFragment : ""});
    EXPECT_EQ(site.contents(), before);

    site.write("d/tl/vantaig", site::encode_harvest_file({}));
    site.add_toplist("top", "stray %%\n");
    before = site.contents();
    EXPECT_EQ(site.start({.closed = closed}).signal, SIGABRT);
    EXPECT_EQ(site.contents(), before);
    EXPECT_EQ(site.log(), "");
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

TEST(Run, AppendsToTheLogAndTruncatesThePage) {
  const SiteWithPage site;
  site.write("l/sys/sys.log", "a line of another program\n");
  site.write("top.html", std::string(100000, 'x'));
  site.remove("d/h/t02.example.his");
  EXPECT_EQ(site.run(), kQuiet);
  EXPECT_EQ(site.run(), kQuiet);
  const std::string line = log_line("1", "d&#47;h&#47;t02.example.his", "0");
  EXPECT_EQ(site.log(), "a line of another program\n" + line + line);
  EXPECT_EQ(site.read("top.html"), kAllIds);
}

}  // namespace
}  // namespace toplist::test
