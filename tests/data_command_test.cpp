// Export and import by the built companion: sites and locks.

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <map>
#include <string>

#include "run/trade_record.h"
#include "support/site.h"
#include "util/file.h"
#include "util/shell.h"
#include "util/text.h"

namespace toplist::test {
namespace {

namespace fs = std::filesystem;

/// Runs shell commands in the site's root, where "toplistctl" and "toplist" are the built ones; the
/// exit status. What is printed goes to `out` and `err` beside the site.
class Shell {
 public:
  explicit Shell(const Site& site) : site_(site) {
    fs::create_symlink(TOPLISTCTL_PROGRAM, beside_.path() + "/toplistctl");
    fs::create_symlink(TOPLIST_PROGRAM, beside_.path() + "/toplist");
  }

  int run(const std::string& commands) {
    (void)beside_.write("commands", commands);
    const std::string line = "cd " + shell_word(site_.path("")) + " && PATH=" + beside_.path() +
                             ":$PATH sh -e " + beside_.path() + "/commands >" + beside_.path() +
                             "/out 2>" + beside_.path() + "/err";
    return WEXITSTATUS(std::system(line.c_str()));
  }

  [[nodiscard]] std::string out() const { return beside_.read("out"); }
  [[nodiscard]] std::string err() const { return beside_.read("err"); }

 private:
  const Site& site_;
  TempDir beside_;
};

constexpr const char* kLock = "l/sys/toplist.lock";

/// What the site holds besides the lock and what an undo needs.
std::map<std::string, std::string> data_of(const Site& site) {
  auto contents = site.contents();
  std::erase_if(contents, [](const auto& file) {
    return file.first == kLock || file.first.starts_with("l/sys/undo");
  });
  return contents;
}

TEST(DataCommands, AnImportedSampleHasThePagesOfTheOriginal) {
  const Site site{Site::Bare{}};
  Shell shell(site);
  ASSERT_EQ(shell.run("toplistctl sample s\n"
                      "toplistctl export trades --site s >t.csv\n"
                      "toplistctl export figures --site s >f.csv\n"
                      "cp -R s copy && rm copy/d/h/* copy/d/t/* copy/d/tl/tl.a1\n"
                      "toplistctl import trades --site copy t.csv\n"
                      "toplistctl import figures --site copy - <f.csv\n"
                      "toplistctl export trades --site copy | cmp - t.csv\n"
                      "toplistctl export figures --site copy | cmp - f.csv\n"
                      "cat f.csv | toplistctl import figures --site s /dev/stdin\n"
                      "diff s/d/t/sum copy/d/t/sum"),
            0)
      << shell.err();
  // Alternatives are picked by the second: both runs have to fall into the same one.
  std::time_t before = 0;
  do {
    before = std::time(nullptr);
    ASSERT_EQ(shell.run("(cd s && toplist run); (cd copy && toplist run)"), 0);
  } while (std::time(nullptr) != before);
  EXPECT_EQ(shell.run("for page in s/*.html; do cmp $page copy/${page#s/}; done; ls s/*.html"), 0)
      << shell.out();
  EXPECT_EQ(site.read("copy/l/sys/sys.log"), "");
}

TEST(DataCommands, NothingIsWrittenWhereSomethingIsWrong) {
  const Site site;
  site.write("bad.csv", "id,period,rin\n101,60,5\n102,99,x\n");
  site.write("good.csv", "id,period,rin\n101,60,5\n102,99,5\n103,99,5\n");
  site.replace_by_dir("d/h/t03.example.his");
  const auto before = data_of(site);
  Shell shell(site);
  EXPECT_EQ(shell.run("toplistctl import figures bad.csv"), 1);
  EXPECT_EQ(shell.err(),
            "toplistctl: bad.csv: line 3, column 3 (rin): a whole number must stand here\n"
            "toplistctl: nothing was written\n");
  EXPECT_EQ(shell.run("toplistctl import figures good.csv"), 2);
  EXPECT_EQ(shell.err(),
            "toplistctl: cannot read d/h/t03.example.his. It is not a regular file. "
            "Nothing was changed.\n");
  EXPECT_EQ(shell.run("toplistctl import trades none.csv"), 2);
  EXPECT_EQ(shell.run("toplistctl import trades - <&-"), 2);
  EXPECT_EQ(data_of(site), before);
  site.remove("l/sys");
  EXPECT_EQ(shell.run("toplistctl import figures good.csv"), 2);
  EXPECT_EQ(shell.err(),
            "toplistctl: cannot open l/sys/toplist.lock: No such file or directory. "
            "Nothing was changed.\n");
}

TEST(DataCommands, ASmallDatabaseIsFilledUpAndBuilds) {
  const Site site(std::vector<Trade>{});
  site.add_toplist("top", "%%tid_000%% %%tit_000%% %%tid_001%%\n");
  Shell shell(site);
  ASSERT_EQ(shell.run("printf 'id,domain,status,title\\n7,a.example,1,\"A \"\"a\"\"\"\\n' |\n"
                      "  toplistctl import trades -"),
            0);
  EXPECT_EQ(shell.out(),
            "Trades: 1, 1 of them new; 0 removed.\n"
            "Added 9 records of no trade, with ids below 0: a run takes fewer than 10 for a "
            "database that is still being written.\n");
  EXPECT_EQ(site.run(), RunResult{});
  EXPECT_EQ(site.read("top.html"), "7 A \"a\"  \n");
  // The exported records are imported as they are.
  EXPECT_EQ(shell.run("toplistctl export trades | toplistctl import trades -"), 0);
  EXPECT_EQ(shell.out(), "Trades: 10, 0 of them new; 0 removed.\n");
}

TEST(DataCommands, AnImportWaitsForARunToEnd) {
  const Site site;
  site.write("t.csv", "id,domain\n1,a.example\n");
  const auto before = data_of(site);
  Shell shell(site);
  site.write(kLock, "");
  {
    const UniqueFd lock = open_for_reading(site.path(kLock));
    ASSERT_EQ(::flock(lock.get(), LOCK_EX), 0);
    // It says that it waits, and does.
    EXPECT_EQ(shell.run("toplistctl import trades t.csv 2>said & pid=$!\n"
                        "until grep -q waiting said; do sleep 0.02; done\n"
                        "kill -0 $pid && kill $pid"),
              0);
    site.remove("said");
    EXPECT_EQ(data_of(site), before);
  }
  EXPECT_EQ(shell.run("toplistctl import trades t.csv"), 0);
  EXPECT_TRUE(data_of(site) != before);
  site.remove("l/sys");
  EXPECT_EQ(shell.run("toplistctl import trades t.csv"), 2);
}

TEST(DataCommands, AToplistIsExportedAsARunShowsIt) {
  const Site site;
  site.add_toplist("top", "%%tid_000%%\n", "2");
  site.add_setting("top", "uin60=110");
  Shell shell(site);
  ASSERT_EQ(shell.run("toplistctl export toplist top.tpl"), 0);
  EXPECT_EQ(shell.out(),
            "rank,id,domain,url,figure,title,description,picture,att00\r\n"
            "0,112,t12.example,http://t12.example/,120,Title 12,About 12,12.jpg,Category 12\r\n"
            "1,111,t11.example,http://t11.example/,110,Title 11,About 11,11.jpg,Category 11\r\n");
  ASSERT_EQ(shell.run("toplistctl export toplist --json top.html"), 0);
  EXPECT_TRUE(contains(shell.out(), "\"rank\": 1,\n    \"id\": 111,")) << shell.out();
  EXPECT_EQ(shell.run("toplistctl export toplist none.tpl"), 2);
}

}  // namespace
}  // namespace toplist::test
