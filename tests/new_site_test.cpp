// The commands sample and init, generated sites, and whole runs of the built program in them.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "support/site.h"
#include "support/site_generator.h"

namespace toplist::test {
namespace {

namespace fs = std::filesystem;

int run_shell(const std::string& command) { return WEXITSTATUS(std::system(command.c_str())); }

RunResult run_ctl(const Site& site, const std::vector<std::string>& arguments) {
  return site.start({.program = TOPLISTCTL_PROGRAM, .arguments = arguments});
}

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

TEST(NewSite, TheSampleIsBuiltWithoutAFailure) {
  const bool has_tidy = run_shell("command -v tidy >/dev/null") == 0;
  const Site site{Site::Bare{}};
  ASSERT_EQ(run_ctl(site, {"sample", "."}).status, 0);
  const auto before = site.contents();
  EXPECT_EQ(site.run(), RunResult{});
  EXPECT_EQ(site.log(), "");
  EXPECT_EQ(run_ctl(site, {"check", "--min-effect", "note"}).out,
            "Nothing found: 60 trades, 57 of them active, and 5 toplists.\n");

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
    if (has_tidy) {
      EXPECT_EQ(run_shell("tidy -qe " + site.path(name)), 0) << name;
    }
  }
  EXPECT_EQ(pages, 5U);
}

TEST(NewSite, AnEmptySiteBuildsItsPageOnceItHasTrades) {
  const Site site{Site::Bare{}};
  ASSERT_EQ(run_ctl(site, {"init", "."}).status, 0);
  EXPECT_EQ(site.run(), RunResult{});
  EXPECT_EQ(site.log(), "|<time>|toplist|10|database was not fully loaded|1||||\n");
  ASSERT_EQ(run_ctl(site, {"sample", "other"}).status, 0);
  for (const char* data : {"trades", "figures"}) {
    ASSERT_EQ(run_shell("cd " + site.path("") + " && " TOPLISTCTL_PROGRAM " export " + data +
                        " --site other | " TOPLISTCTL_PROGRAM " import " + data + " - >printed"),
              0);
  }
  EXPECT_EQ(site.run(), RunResult{});
  const std::string page = site.read("index.html");
  EXPECT_EQ(count(page, "<li data-id=\"[0-9]+\" style=\"--v:[0-9]+\">"), 25);
  EXPECT_EQ(count(page, "<a href=\"http://www[^>]+.example/\">"), 25);
  EXPECT_EQ(files_named_in(page).count("style.css"), 1U);
  EXPECT_EQ(run_ctl(site, {"check"}).out,
            "Nothing found: 60 trades, 57 of them active, and 1 toplist.\n");
}

/// The commands that create a site, without its folder.
const std::vector<std::vector<std::string>> kCommands{
    {"sample"}, {"init"}, {"init", "--harvest-of", "."}};

constexpr const char* kRule =
    ". Name a new folder in an existing one, or an empty folder of yours. Nothing was created.\n";

TEST(NewSite, IsCreatedOnlyWhereNothingIs) {
  const Site site;
  site.make_dir("elsewhere");
  site.make_dir("full/d");
  fs::create_directory_symlink("elsewhere", site.path("link"));
  const std::string name_too_long(300, 'x');
  const struct {
    std::string path;
    const char* reason;
  } cases[] = {{"d/t/sum", "Not a directory"},
               {"full", "Directory not empty"},
               {"link", "Not a directory"},
               {"none/new", "No such file or directory"},
               {name_too_long, "File name too long"}};
  const auto before = site.contents();
  for (const auto& c : cases) {
    for (auto command : kCommands) {
      command.push_back(c.path);
      const RunResult result = run_ctl(site, command);
      EXPECT_EQ(result.status, 2) << c.path;
      EXPECT_EQ(result.err,
                "toplistctl: cannot create " + site.path(c.path) + ": " + c.reason + kRule);
    }
  }
  EXPECT_EQ(site.contents(), before);
}

TEST(NewSite, NothingRemainsOfOneThatCannotBeWritten) {
  const Site site;
  site.make_dir("empty");
  const auto before = site.contents();
  for (auto command : kCommands) {
    for (const char* folder : {"empty", "new"}) {
      command.push_back(folder);
      // As on a full disk: no file can grow.
      const RunResult result = site.start(
          {.program = TOPLISTCTL_PROGRAM, .arguments = command, .limit = "-f 0 && trap '' XFSZ"});
      EXPECT_EQ(result.status, 2) << command[0] << ' ' << folder;
      EXPECT_EQ(site.contents(), before) << command[0] << ' ' << folder;
      command.pop_back();
    }
  }
}

TEST(NewSite, RootWritesNothingThatTheFoldersOwnerCouldNot) {
  constexpr uid_t kNobody = 65534;
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  const Site site;
  fs::permissions(site.path(""), fs::perms(0755));
  for (const char* folder : {"theirs", "ours"}) site.make_dir(folder);
  fs::create_directory_symlink(site.path("ours"), site.path("theirs/link"));
  ASSERT_EQ(::chown(site.path("theirs").c_str(), kNobody, kNobody), 0);
  for (auto command : kCommands) {
    command.push_back("theirs/link/new");
    EXPECT_EQ(run_ctl(site, command).status, 2) << command[0];
    command.back() = "theirs/" + std::to_string(command.size()) + command[0];
    EXPECT_EQ(run_ctl(site, command).status, 0) << command[0];
    struct stat status {};
    ASSERT_EQ(::stat(site.path(command.back() + "/d/tl/vantaig").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, kNobody) << command[0];
  }
  EXPECT_TRUE(fs::is_empty(site.path("ours")));

  // A site may not show its owner a file of root's by a link.
  site.write("secret", "ours\n");
  fs::permissions(site.path("secret"), fs::perms(0600));
  fs::remove(site.path("theirs/2init/d/tl/vantaig"));
  fs::create_symlink(site.path("secret"), site.path("theirs/2init/d/tl/vantaig"));
  EXPECT_EQ(run_ctl(site, {"init", "--harvest-of", "theirs/2init", "harvest"}).status, 2);
  EXPECT_FALSE(fs::exists(site.path("harvest")));
}

TEST(GeneratedSite, IsTheSameForTheSameSeedAndBuildsAllItsPages) {
  const Site one{Site::Bare{}};
  const Site other{Site::Bare{}};
  write_site(one.path(""), {.trades = 40, .toplists = 6});
  write_site(other.path(""), {.trades = 40, .toplists = 6});
  EXPECT_TRUE(one.contents() == other.contents());
  write_site(other.path(""), {.trades = 40, .toplists = 6, .seed = 1});
  EXPECT_NE(one.read("d/t/sum"), other.read("d/t/sum"));
  EXPECT_EQ(one.run(), RunResult{});
  EXPECT_EQ(one.log(), "");
  for (int i = 1; i <= 6; ++i) {
    const std::string page = one.read("list-" + std::to_string(i) + ".html");
    EXPECT_EQ(count(page, "data-id=\"[0-9]+\""), 38) << i;  // two trades are not active
  }
}

}  // namespace
}  // namespace toplist::test
