// Whether a schedule is alive.

#include "toplistctl/commands/status/status.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <string>

#include "support/site.h"
#include "util/file.h"

namespace toplist::ctl {
namespace {

using test::InSite;
using test::Site;

constexpr std::time_t kNow = 1'800'000'000;

void set_age(const Site& site, const std::string& name, std::time_t seconds) {
  const std::time_t time = kNow - seconds;
  const timespec times[2] = {{time, 0}, {time, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, site.path(name).c_str(), times, 0), 0) << name;
}

std::string log_line(std::time_t age, const char* module, const char* severity = "0") {
  const std::time_t time = kNow - age;
  std::tm local{};
  ::localtime_r(&time, &local);
  char text[13];
  std::strftime(text, sizeof text, "%Y%m%d%H%M", &local);
  return std::string("|") + text + "|" + module + "|1|d&#47;h|" + severity + "||||\n";
}

class Status : public testing::Test {
 protected:
  Status() {
    for (const char* name : {"a", "b"}) {
      site_.add_toplist(name, "x\n");
      site_.write(std::string(name) + ".html", "x\n");
    }
  }

  [[nodiscard]] SiteStatus look(const StatusLimits& limits = {}) const {
    const InSite in_site(site_);
    return status_of(SiteView(), limits, kNow);
  }

  Site site_;
};

TEST_F(Status, APageIsLateWhenItIsMissingOrTooOld) {
  set_age(site_, "a.html", 900);
  set_age(site_, "b.html", 901);
  const SiteStatus status = look();
  EXPECT_FALSE(status.pages[0].late);
  EXPECT_TRUE(status.pages[1].late);
  EXPECT_FALSE(status.is_fine());
  EXPECT_TRUE(look({.page_age = 901}).is_fine());

  site_.remove("b.html");
  EXPECT_EQ(look().pages[1].age, std::nullopt);
  EXPECT_FALSE(look({.page_age = 9999}).is_fine());
}

TEST_F(Status, APageWithAWrongCheckValueIsExpectedOneSwitchedOffIsNot) {
  set_age(site_, "a.html", 10);
  site_.remove("b.html");
  for (const auto& [mode, late] : {std::pair{"1", true}, {"0", false}, {"2", true}}) {
    site_.write("d/tl/tl",
                "|a.tpl||a.html|1|2||||\n|b.tpl||b.html|1|" + std::string(mode) + "|x|||");
    EXPECT_EQ(look().pages[1].late, late) << mode;
    EXPECT_EQ(look().is_fine(), !late) << mode;
  }
}

TEST_F(Status, OwnLinesSinceTheNewestPageCount) {
  set_age(site_, "a.html", 600);
  set_age(site_, "b.html", 300);
  site_.write("l/sys/sys.log", log_line(900, "toplist") + log_line(420, "toplist") +
                                   log_line(60, "other") + log_line(60, "toplist") + "no line\n");
  EXPECT_EQ(look().log_lines.size(), 1U);
  EXPECT_EQ(look({.log_span = 440}).log_lines.size(), 2U);
  EXPECT_TRUE(look().is_fine());  // the runs went on

  site_.write("l/sys/sys.log", log_line(60, "toplist", "1"));
  EXPECT_EQ(look().failed_runs(), 1U);
  EXPECT_FALSE(look().is_fine());
  EXPECT_TRUE(look({.pages_only = true}).is_fine());

  std::string log = log_line(180, "toplist");
  while (log.size() < std::size_t{2} << 20) log += log_line(120, "toplist");
  site_.write("l/sys/sys.log", log);
  EXPECT_TRUE(look().has_more_lines);
  EXPECT_FALSE(look({.log_span = 1}).has_more_lines);
  site_.replace_by_dir("l/sys/sys.log");
  EXPECT_NE(look().log_fault, std::nullopt);
  EXPECT_FALSE(look().is_fine());
}

TEST_F(Status, APageThatIsNotWholeIsAFault) {
  for (const char* name : {"a.html", "b.html"}) set_age(site_, name, 1);
  EXPECT_TRUE(look().is_fine());
  for (const char* page : {"", "x"}) {
    site_.write("b.html", page);
    EXPECT_FALSE(look({.pages_only = true}).is_fine()) << page;
    EXPECT_NE(status_text(look()).find("b.html: the page "), std::string::npos) << page;
  }
}

TEST_F(Status, ARunThatWouldEndIsNotFineAndHasOneReason) {
  set_age(site_, "a.html", 1);
  set_age(site_, "b.html", 1);
  EXPECT_TRUE(look().is_fine());
  site_.write("d/tl/b.tpl", "50%%\n");
  site_.write("d/tl/tl", "|a.tpl||a.html|1|2||||\n|b.tpl||b.html|1|2||||");
  EXPECT_NE(look({.pages_only = true}).ending, "");
  site_.write("d/tl/tl", "|b.tpl||b.html|1|2||||\n|a.tpl||a.html|1|2||||");
  const std::string text = status_text(look());
  EXPECT_NE(text.find("not reached"), std::string::npos) << text;
  EXPECT_EQ(std::count(text.begin(), text.end(), '%'), 4) << text;  // at its toplist, and below
  EXPECT_FALSE(look({.pages_only = true}).is_fine());
}

TEST_F(Status, TellsWhoHoldsTheLockAndCountsThumbnails) {
  EXPECT_FALSE(look().running);
  site_.write(kRunLockPath, "");
  EXPECT_FALSE(look().running);
  const UniqueFd lock = open_for_reading(site_.path(kRunLockPath));
  ASSERT_EQ(::flock(lock.get(), LOCK_EX), 0);
  ASSERT_TRUE(look().running);
  EXPECT_LT(look().running->seconds.value_or(0), 3600);

  site_.write("d/tl/vantaig", "thumbs/\n\n\n\n\n0\n0\n");
  site_.make_dir("thumbs");
  for (const char* domain : {"t01.example", "t02.example"}) {
    site_.write(std::string("thumbs/") + domain + ".jpg", "x");
  }
  set_age(site_, "thumbs/t01.example.jpg", 31 * kDaySeconds);
  set_age(site_, "thumbs/t02.example.jpg", 29 * kDaySeconds);
  EXPECT_EQ(look().active_trades, 12U);
  EXPECT_EQ(look().without_thumbnail, 10U);
  EXPECT_EQ(look().stale_thumbnails, 1U);
  site_.write("d/tl/vantaig", "thumbs/\n\n\n\n\n1\n0\n");
  EXPECT_EQ(look().without_thumbnail, 0U);  // they are not required
}

TEST_F(Status, MetricsNameEachPageOnceInUtf8WithItsLabelEscaped) {
  const SiteStatus status{.pages = {{1, "a\"\\\n\xE9", 7, {}, false},
                                    {2, "a\"\\\n\xE8", 7, {}, false},
                                    {3, "none", std::nullopt, {}, true}},
                          .active_trades = 5};
  const std::string text = status_metrics(status);
  const std::string ages =
      "# HELP toplist_page_age_seconds Age of a page.\n# TYPE toplist_page_age_seconds gauge\n"
      "toplist_page_age_seconds{page=\"a\\\"\\\\\\n\uFFFD\"} 7\n# HELP toplist_pages_late ";
  EXPECT_EQ(text.substr(0, ages.size()), ages);
  for (const char* line : {"\ntoplist_pages_late 1\n", "\ntoplist_pages_missing 1\n",
                           "\ntoplist_trades_active 5\n", "\ntoplist_run_seconds 0\n"}) {
    EXPECT_NE(text.find(line), std::string::npos) << line;
  }
}

}  // namespace
}  // namespace toplist::ctl
