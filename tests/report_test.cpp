// The operator's report: what it shows with and without a history, and that texts stay texts.

#include "toplistctl/lib/report/report.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <regex>
#include <string>
#include <vector>

#include "run/trade_record.h"
#include "support/site.h"
#include "toplistctl/lib/history/history.h"
#include "toplistctl/lib/output/value.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;
using test::InSite;
using test::RunResult;
using test::Site;

constexpr std::int64_t kNow = 1'800'000'000;
constexpr std::int64_t kHour = kSecondsPerHour;
constexpr std::int64_t kDay = kSecondsPerDay;

std::string report_of(const Site& site, std::size_t top = 100) {
  ::setenv("TZ", "UTC", 1);  // the log has local times
  ::tzset();
  const InSite in_site(site);
  const auto page = report_page({.top = top, .now = kNow});
  EXPECT_TRUE(page) << page.error().text();
  return page.value_or("");
}

std::ptrdiff_t count(const std::string& page, const char* pattern) {
  const std::regex regex(pattern);
  return std::distance(std::sregex_iterator(page.begin(), page.end(), regex), {});
}

/// The text of a page's part without its tags, each of which becomes a blank.
std::string text_between(const std::string& page, const std::string& begin,
                         const std::string& end) {
  const std::size_t from = page.find(begin);
  if (from == std::string::npos) return "no " + begin;
  const std::string part = page.substr(from, page.find(end, from) - from);
  return std::regex_replace(std::regex_replace(part, std::regex("<[^>]*>"), " "),
                            std::regex("\\s+"), " ");
}

/// Records the default trades' figures at a time, with changes; only the first `count`.
void record(
    const Site& site, std::int64_t time,
    const std::function<void(TradeRow&)>& change = [](auto&) {}, std::size_t count = 12) {
  std::vector<TradeRow> rows(count);
  const auto trades = Site::default_trades();
  for (std::size_t i = 0; i < count; ++i) {
    rows[i].id = std::to_string(trades[i].id);
    rows[i].domain = trades[i].domain;
    rows[i].periods = trades[i].periods;
    change(rows[i]);
  }
  ASSERT_TRUE(record_snapshot(site.path(kHistoryPath), rows, time));
}

TEST(Report, WithoutAHistoryShowsEverythingThatNeedsNone) {
  auto trades = Site::default_trades();
  trades[1].periods[kPeriod24].rin = 0;
  trades[2].status = 0;
  const Site site(trades);
  site.add_toplist("a", "%%tit_000%%\n%%tit_001%%\n");
  site.add_toplist("b", "%%tit_000%%\n", "16");
  site.add_setting("b", "rin60=105");
  site.write("b.html", "x");
  site.write("l/sys/sys.log",
             "|202701150700|toplist|1|d&#47;h|0||||\n|202701150705|toplist|1|d&#47;h|0||||\n"
             "|202701010000|toplist|1|long ago|0||||\n");
  const std::string page = report_of(site);

  EXPECT_EQ(count(page, "toplistctl record</code>"), 1);
  EXPECT_EQ(count(page, "class=\"chart\""), 0);
  EXPECT_EQ(count(page, "something is wrong"), 1);
  EXPECT_EQ(text_between(page, "<td>a.html", "</tr>"), " a.html none MISSING built ");
  EXPECT_EQ(count(page, "<td>CUT</td>"), 1);
  EXPECT_EQ(count(page, "<li>b.html: the page ends after 1 bytes"), 1);
  EXPECT_EQ(text_between(page, "<h3>Logged", "</section>"),
            " Logged in the last day count first last program event subject outcome 2 2027-01-15 "
            "07:00 2027-01-15 07:05 toplist cannot open d/h went on ");
  EXPECT_EQ(text_between(page, "<h3>Last hour", "</article>"),
            " Last hour Now Before Change In 680 – – Unique 750 – – Out 0 – – Clicks 0 – – ");
  EXPECT_EQ(text_between(page, "<h3>Sent nothing", "</article>"),
            " Sent nothing for a day visitors in, this week Title 02 0 ");
  EXPECT_EQ(text_between(page, "<h3>New", "</article>"),
            " New since last week visitors in, this week Needs a history of a week ");
  EXPECT_EQ(count(page, "<article class=\"card\" id=\"p"), 11);
  EXPECT_EQ(text_between(page, "<article class=\"card\" id=\"p1\"", "<table"),
            " Title 01 http://t01.example/ Number 1 by visitors in, trade 101. ");
  EXPECT_EQ(text_between(page, "<th scope=\"row\">rin", "</tr>"), " rin 120 64 0 1,000 ");
  EXPECT_EQ(text_between(page, "<ul class=\"ranks\">", "</ul>"),
            " a.html : number 1 of 11 b.html : number 1 of 2 ");
  EXPECT_EQ(text_between(page, "<tr><td class=\"num rank\">2", "</tr>"),
            " 2 Title 04 t04.example 64 64 100 % 75 0 0 200 – "
            "none; a.html: number 3 of 11, too low for the page ");
}

TEST(Report, ComparesWithTheHistory) {
  const Site site;
  record(
      site, kNow - 7 * kDay - kHour,
      [](TradeRow& row) {
        row.periods[kPeriod07].rin = row.id == "101" ? 500 : row.id == "102" ? -70 : 0;
      },
      11);
  record(site, kNow - kDay, [](TradeRow& row) { row.periods[kPeriod24].rin = 128; });
  record(site, kNow - 3 * kHour);
  record(site, kNow - kHour, [](TradeRow& row) { row.periods[kPeriod60].rin *= 2; });
  const std::string page = report_of(site);

  EXPECT_EQ(count(page, "toplistctl record</code>"), 0);
  EXPECT_EQ(text_between(page, "<tr><th scope=\"row\">In", "</tr>"), " In 780 1,560 −50 % ");
  EXPECT_EQ(
      text_between(page.substr(page.find("<h3>Last day")), "<tr><th scope=\"row\">In", "</tr>"),
      " In 768 1,536 −50 % ");
  EXPECT_EQ(text_between(page, "<h3>Rose", "</article>"),
            " Rose most visitors in, this week against last week Title 02 +70 ");
  EXPECT_EQ(text_between(page, "<h3>Fell", "</article>"),
            " Fell most visitors in, this week against last week Title 01 −500 ");
  EXPECT_EQ(text_between(page, "<h3>New", "</article>"),
            " New since last week visitors in, this week Title 12 0 ");
  // The hour of now is a slot, too: three pieces of a line, with gaps before and between them.
  EXPECT_EQ(count(page, "<desc id=\"hours-d\">4 of 48 hours recorded. In: from 780 "), 1);
  const std::string hours = page.substr(page.find("aria-labelledby=\"hours-t"));
  EXPECT_EQ(count(hours.substr(0, hours.find("</figure>")), "class=\"gap\""), 3);
  EXPECT_EQ(count(hours.substr(0, hours.find("</figure>")),
                  "class=\"in\" d=\"M23 [0-9]+h0M44 [0-9]+h0M46 [0-9]+L47 [0-9]+\""),
            1);
  EXPECT_EQ(count(page, "class=\"spark\""), 12);
}

TEST(Report, TopBoundsPicturesAndSections) {
  const Site site;
  record(site, kNow - kHour);
  const std::string picture = "\xFF\xD8\xFF picture";
  site.write("d/tl/vantaig", "l/thumbs/\n");
  for (const char* name : {"t01", "t02"})
    site.write("l/thumbs/" + std::string(name) + ".example.jpg", picture);
  site.write("l/thumbs/t03.example.jpg", "<script>");
  const struct {
    std::size_t top;
    std::ptrdiff_t sections, others, pictures;
  } cases[] = {{100, 12, 0, 2}, {12, 12, 0, 2}, {1, 1, 11, 1}, {0, 0, 12, 0}};
  for (const auto& c : cases) {
    const std::string page = report_of(site, c.top);
    EXPECT_EQ(count(page, "<article class=\"card\" id=\"p"), c.sections) << c.top;
    EXPECT_EQ(count(page, "class=\"spark\""), c.sections) << c.top;
    EXPECT_EQ(count(page, "\n<tr><td>[0-9]"), c.others) << c.top;
    EXPECT_EQ(count(page, "src=\"data:image/jpeg;base64,/9j/IHBpY3R1cmU=\""), c.pictures) << c.top;
    EXPECT_EQ(count(page, "href=\"#p[0-9]+\"") > 0, c.top > 0) << c.top;
  }
}

TEST(Report, TextsOfOthersStayTexts) {
  constexpr std::string_view kTexts[] = {"<script>alert(1)</script>",
                                         "\"><img src=x onerror=alert(1)>",
                                         "' onclick='alert(1)",
                                         "</bdi></style><!--",
                                         "{nonce}{}{{",
                                         "&ltb&gt",
                                         "\xFF\xC3(\x1B[2J\x01\x7F\xC2\x9B",
                                         "\xE2\x80\xAEoverride"};
  std::vector<test::Trade> trades = Site::default_trades();
  for (std::size_t i = 0; i < std::size(kTexts); ++i) trades[i].columns[0] = kTexts[i];
  const Site site(trades);
  std::string index = site.read(kTradesPath);
  const auto put = [&index](std::size_t trade, std::size_t field, const std::string& text) {
    index.replace(trade * sizeof(TradeRecord) + field, text.size() + 1, text.c_str(),
                  text.size() + 1);
  };
  for (std::size_t i = 0; i < std::size(kTexts); ++i) {
    put(i, offsetof(TradeRecord, url),
        (i % 2 == 0 ? "http://" : "javascript:") + std::string(kTexts[i]));
    if (i % 2 == 0) put(8 + i / 2, offsetof(TradeRecord, domain), std::string(kTexts[i]));
  }
  site.write(kTradesPath, index);
  site.add_toplist("<b onload=x>", "x\n");
  record(site, kNow - kHour);

  for (const std::size_t top : {100U, 2U}) {
    const std::string page = report_of(site, top);
    EXPECT_EQ(page, as_utf8(page));
    EXPECT_FALSE(has_control_character(std::regex_replace(page, std::regex("\n"), "")));
    EXPECT_EQ(count(page, "<script"), 1);
    EXPECT_EQ(count(page, "<style"), 1);
    EXPECT_EQ(count(page, "<(img|b |!--)"), 0);
    EXPECT_EQ(count(page, "<[^>\"]*(\"[^\"]*\"[^>\"]*)* on[a-z]+="), 0);
    EXPECT_EQ(count(page, "href=\"(?!#p?[a-z0-9]+\"|http://)"), 0);
    EXPECT_EQ(count(page, "http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "),
              1);
    if (top == 2) continue;
    EXPECT_EQ(count(page, "<bdi>\\{nonce\\}\\{\\}\\{\\{</bdi>"), 5)
        << "of a title 2, of a domain 3";
    EXPECT_EQ(count(page, "<a href=\"http://[^\"]*\" rel"), 8) << "four hostile, four others";
    EXPECT_EQ(count(page, "<bdi>&lt;b&gt;</bdi>"), 2) << "a title is HTML: shown as it is meant";
  }
}

TEST(Report, IsWrittenWholeOrNotAtAll) {
  const struct {
    const char* reason;
    std::vector<std::string> options;
    std::function<void(const Site&)> spoil;
    const char* limit;
  } cases[] = {
      {"cannot open d/t/index: No such file",
       {},
       [](const Site& site) { site.remove("d/t/index"); },
       ""},
      {"cannot read d/t/sum. It is not a regular file",
       {},
       [](const Site& site) { site.replace_by_dir("d/t/sum"); },
       ""},
      {"cannot read d/h/t03.example.his. It is not a regular file",
       {},
       [](const Site& site) { site.replace_by_dir("d/h/t03.example.his"); },
       ""},
      {"no SQLite database",
       {},
       [](const Site& site) { site.write(kHistoryPath, std::string(9999, 'x')); },
       ""},
      {"cannot read", {"--history", "none"}, [](const Site&) {}, ""},
      {"no/such/folder", {"--output", "no/such/folder/r"}, [](const Site&) {}, ""},
      {"File too large", {}, [](const Site&) {}, "-f 8"},
      {"", {}, [](const Site&) {}, ""},
      {"",
       {},
       [](const Site& site) {
         for (const char* f : {"d/t/sum", "d/tl/tl", "d/tl/tl.a1", "d/tl/vantaig"}) site.remove(f);
       },
       ""},
      {"", {}, [](const Site& site) { fs::resize_file(site.path("d/t/index"), 1); }, ""},
  };
  for (const auto& c : cases) {
    const Site site;
    site.write("r.html", "before");
    c.spoil(site);
    std::vector<std::string> arguments{"report"};
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    if (c.options.empty() || c.options[0] != "--output") {
      arguments.insert(arguments.end(), {"--output", "r.html"});
    }
    const RunResult result =
        site.start({.program = TOPLISTCTL_PROGRAM, .arguments = arguments, .limit = c.limit});
    const bool is_written = std::string_view(c.reason).empty();
    EXPECT_EQ(result.status, is_written ? 0 : 2) << c.reason << result;
    EXPECT_NE(result.err.find(c.reason), std::string::npos) << result;
    EXPECT_EQ(result.out, "") << c.reason;
    const std::string page = site.read("r.html");
    EXPECT_EQ(page == "before", !is_written) << c.reason;
    EXPECT_EQ(page.ends_with("</html>\n"), is_written) << c.reason;
  }
}

TEST(Report, WhyShowsTheTrend) {
  const Site site;
  const std::int64_t now = std::time(nullptr);
  const auto why = [&site](const char* trade) {
    return site.start({.program = TOPLISTCTL_PROGRAM, .arguments = {"why", trade}});
  };
  EXPECT_EQ(count(why("101").out, "trend"), 0);
  record(site, now - 7 * kDay, [](TradeRow& row) { row.periods[kPeriod24].rin = 812; });
  record(site, now - kDay, [](TradeRow& row) { row.periods[kPeriod24].rin = 640; });
  EXPECT_EQ(count(why("101").out, "  trend      rin24: 64 now, 640 yesterday, 812 a week ago\n"),
            1);
  site.write(kHistoryPath, std::string(9999, 'x'));
  const RunResult result = why("101");
  EXPECT_EQ(count(result.out, "101 t01.example"), 1);
  EXPECT_NE(result.err.find("no SQLite database"), std::string::npos) << result;
}

}  // namespace
}  // namespace toplist::ctl
