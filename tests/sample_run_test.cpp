// Sample sites, empty sites, and whole runs of the built program in them.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>

#include "support/site.h"
#include "toplistctl/commands/sample/sample_site.h"
#include "toplistctl/lib/new_site/empty_site.h"
#include "util/fields.h"

namespace toplist::test {
namespace {

using site::write_sample_site;

int run_shell(const std::string& command) { return WEXITSTATUS(std::system(command.c_str())); }

/// How often the pattern is found in the page.
std::ptrdiff_t count(const std::string& page, const char* pattern) {
  const std::regex regex(pattern);
  return std::distance(std::sregex_iterator(page.begin(), page.end(), regex), {});
}

/// What the page's links and pictures name, without queries.
std::set<std::string> files_named_in(const std::string& page) {
  static const std::regex kAddress("(href|src)=\"([^\"?]*)");
  std::set<std::string> files;
  for (std::sregex_iterator at(page.begin(), page.end(), kAddress), end; at != end; ++at) {
    files.insert((*at)[2]);
  }
  return files;
}

TEST(SampleSite, IsBuiltWithoutAFailure) {
  const Site site{Site::Bare{}};
  ASSERT_EQ(write_sample_site(site.path(""), {}), "");
  const auto before = site.contents();
  EXPECT_EQ(site.run(), RunResult{});
  EXPECT_EQ(site.log(), "");

  std::size_t pages = 0;
  for (const auto& [name, text] : site.contents()) {
    if (before.contains(name)) {
      EXPECT_EQ(text, before.at(name)) << name;
      continue;
    }
    ++pages;
    EXPECT_EQ(text.find("%%"), std::string::npos) << name;
    EXPECT_EQ(count(text, "data-id=\" \""), 0) << name;  // every place has a trade
    EXPECT_GT(count(text, "data-id=\"[0-9]+\""), 15) << name;
    for (const std::string& file : files_named_in(text)) {
      EXPECT_NE(site.read(file), "") << name << " leads to " << file;
    }
  }
  EXPECT_EQ(pages, site::SampleOptions{}.toplists);
}

TEST(SampleSite, HasPagesOfValidHtml) {
  if (run_shell("command -v tidy >/dev/null") != 0) GTEST_SKIP() << "tidy is not installed";
  const Site site{Site::Bare{}};
  ASSERT_EQ(write_sample_site(site.path(""), {}), "");
  EXPECT_EQ(site.run(), RunResult{});
  for (const auto& [name, text] : site.contents()) {
    if (!name.ends_with(".html") || name.find('/') != std::string::npos) continue;
    EXPECT_EQ(run_shell("tidy -qe " + site.path(name)), 0) << name;
  }
}

TEST(SampleSite, IsTheSameForTheSameSeedOnly) {
  const Site one{Site::Bare{}};
  const Site other{Site::Bare{}};
  ASSERT_EQ(write_sample_site(one.path(""), {.trades = 70, .toplists = 8}), "");
  ASSERT_EQ(write_sample_site(other.path(""), {.trades = 70, .toplists = 8}), "");
  EXPECT_TRUE(one.contents() == other.contents());
  ASSERT_EQ(write_sample_site(other.path(""), {.trades = 70, .toplists = 8, .seed = 1}), "");
  EXPECT_NE(one.read("d/t/sum"), other.read("d/t/sum"));
}

TEST(SampleSite, LeavesNothingOfALargerOneBehind) {
  const Site fresh{Site::Bare{}};
  const site::SampleOptions small{.trades = 12, .toplists = 2};
  ASSERT_EQ(write_sample_site(fresh.path(""), small), "");
  const Site site{Site::Bare{}};
  ASSERT_EQ(write_sample_site(site.path(""), {.trades = 80, .toplists = 7}), "");
  EXPECT_EQ(site.run(), RunResult{});
  ASSERT_EQ(write_sample_site(site.path(""), small), "");
  auto contents = site.contents();
  EXPECT_EQ(std::erase_if(contents,
                          [](const auto& file) {
                            return file.first.ends_with(".html") &&
                                   file.first.find('/') == std::string::npos &&
                                   file.first != "out.html";
                          }),
            7);  // the pages of the run stay
  EXPECT_TRUE(contents == fresh.contents());
}

/// A folder that nothing may be laid out in, and what is said of it behind its path.
struct Refusal {
  const char* path;
  const char* said;
};

TEST(SampleSite, TouchesNoFolderThatIsNotItsOwn) {
  const Site site{Site::Bare{}};
  site.write("file", "x");
  site.make_dir("full");
  site.write("full/file", "x");
  ASSERT_EQ(write_sample_site(site.path("changed"), {.trades = 12}), "");
  site.write("changed/style.css", "mine");
  ASSERT_EQ(write_sample_site(site.path("cut"), {.trades = 12}), "");
  site.remove("cut/d/h/chess-nook.example.his");
  site.make_dir("unfinished");
  site.write("unfinished/.sample-site", "# ...\n");
  const std::string name_too_long(300, 'x');
  const auto before = site.contents();
  const Refusal refusals[] = {
      {"file", " is not a folder"},
      {"full", " is neither empty nor a sample site"},
      {"changed", "/style.css has been changed since; --replace lays it out anew all the same"},
      {"cut", "/d/h/chess-nook.example.his has been changed since; --replace"},
      {"unfinished", " was not finished or has no list of its files; --replace"},
      {name_too_long.c_str(), ": File name too long"},
  };
  for (const auto& [path, said] : refusals) {
    const std::string problem = write_sample_site(site.path(path), {});
    EXPECT_NE(problem.find(site.path(path) + said), std::string::npos) << problem;
    EXPECT_NE(site::write_empty_site(site.path(path)), "") << path;
  }
  const std::string problem = write_sample_site(
      site.path("new"),
      {.thumbnails = site::Thumbnails::harvested, .partner_pages = site.path("full")});
  EXPECT_EQ(problem, site.path("full") + " is neither empty nor a folder of a sample's partners");
  EXPECT_TRUE(site.contents() == before);

  EXPECT_NE(write_sample_site(site.path("full"), {.replace = true}), "");
  EXPECT_EQ(write_sample_site(site.path("changed"), {.replace = true}), "");
  EXPECT_NE(site.read("changed/style.css"), "mine");

  site.remove("changed/d/t/index");
  site.make_dir("changed/d/t/index");
  site.write("changed/d/t/index/mine", "x");
  EXPECT_EQ(write_sample_site(site.path("changed"), {.replace = true}),
            "cannot write " + site.path("changed") + "/d/t/index: Is a directory");
}

TEST(SampleSite, RemovesNothingOutsideItselfWhateverItsListSays) {
  const Site site{Site::Bare{}};
  site.write("precious", "x");
  const std::string digits(40, '0');
  site.make_dir("s");
  site.write("s/.sample-site", "# list\n" + digits + "  ../precious\n" + digits + "  " +
                                   site.path("precious") + "\n" + digits + "  d/../../precious\n");
  EXPECT_EQ(write_sample_site(site.path("s"), {.trades = 12, .replace = true}), "");
  EXPECT_EQ(site.read("precious"), "x");
}

TEST(SampleSite, ServesItsPartnersPagesForAHarvest) {
  const Site site{Site::Bare{}};
  const site::SampleOptions large{.trades = 20,
                                  .thumbnails = site::Thumbnails::harvested,
                                  .partner_pages = site.path("partners")};
  ASSERT_EQ(write_sample_site(site.path("s"), large), "");
  const std::string page = site.read("partners/http:/www.chess-nook.example/index.html");
  EXPECT_EQ(count(page, "chess-nook.example"), 2);
  EXPECT_GT(site.read("partners/http:/chess-nook.example/pictures/2006-10417.jpg").size(), 2048);
  EXPECT_EQ(count(site.read("partners/http:/www.paddle-notes.example/index.html"), "/gallery/"), 0);

  site::SampleOptions small = large;
  small.trades = 10;
  ASSERT_EQ(write_sample_site(site.path("s"), small), "");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(site.path("partners/http:")), {}),
            19);  // two hosts a partner, but for the seventh
}

TEST(EmptySite, BuildsItsPageOnceItHasTrades) {
  const Site site{Site::Bare{}};
  ASSERT_EQ(site::write_empty_site(site.path("")), "");
  EXPECT_EQ(site.run(), RunResult{});
  EXPECT_EQ(site.log(), "|<time>|toplist|10|database was not fully loaded|1||||\n");
  for (const Trade& trade : Site::default_trades()) site.add_trade(trade);
  EXPECT_EQ(site.run(), RunResult{});
  EXPECT_EQ(count(site.read("index.html"), "<li><a href=\"http://t[0-9]+.example/\">"), 10);
}

}  // namespace
}  // namespace toplist::test
