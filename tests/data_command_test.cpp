// Import and undo by the built companion where reads fail, processes are killed, or others hold the
// lock or plant links. What the commands print is in data/sessions.txt.

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <map>
#include <string>
#include <utility>

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

bool can_inject() { return std::system("strace -qq -o /dev/null true >/dev/null 2>&1") == 0; }

// Whatever cannot be read, nothing is changed; and a file is never taken for an empty one.
TEST(DataCommands, AReadErrorIsAnError) {
  if (!can_inject()) GTEST_SKIP() << "strace is needed";
  const Site site;
  site.write("t.csv", "id,title\n101,x\n");
  site.write("f.csv", "id,period,rin\n101,60,5\n101,99,5\n");
  const auto before = data_of(site);
  Shell shell(site);
  // The search for leaks does not work in a traced process.
  const std::string failing =
      "ASAN_OPTIONS=detect_leaks=0 strace -qq -o /dev/null -e inject=read,pread64:error=EIO -P ";
  const std::pair<const char*, const char*> kTries[] = {
      {"d/t/index", "import trades t.csv"},
      {"d/tl/tl.a1", "import trades t.csv"},
      {"d/t/index", "set 101 status=0"},
      {"d/tl/tl.a1", "set 101 status=0"},
      {"d/t/index", "import figures f.csv"},
      {"d/t/sum", "import figures f.csv"},
      {"d/h/t01.example.his", "import figures f.csv"}};
  for (const auto& [file, command] : kTries) {
    EXPECT_EQ(shell.run(failing + file + " toplistctl " + command), 2) << file << " " << command;
    EXPECT_TRUE(shell.err().ends_with(std::string("toplistctl: cannot read ") + file +
                                      ": Input/output error. Nothing was changed.\n"));
    EXPECT_EQ(data_of(site), before) << file;
  }
}

// Killed at any of the calls that change files, the next command finds the old site or the new one.
TEST(DataCommands, AKilledChangeIsUndoneOrDone) {
  if (!can_inject()) GTEST_SKIP() << "strace is needed";
  const Site site;
  site.write("t.csv", "id,title\n101,x\n102,y\n130,z\n");
  Shell shell(site);
  ASSERT_EQ(shell.run("toplistctl set 101 url=u"), 0);  // leaves something to undo
  const auto before = data_of(site);
  ASSERT_EQ(shell.run("toplistctl import trades t.csv"), 0);
  const auto after = data_of(site);
  ASSERT_EQ(shell.run("toplistctl undo"), 0);
  std::size_t kills = 0;
  for (const std::string call : {"mkdir", "link", "rename", "unlink", "fsync", "write"}) {
    for (int when = 1;; ++when) {
      const std::string failing =
          "ASAN_OPTIONS=detect_leaks=0 strace -qq -o /dev/null -e inject=" + call +
          ":signal=KILL:when=" + std::to_string(when) + " toplistctl ";
      if (shell.run(failing + "import trades t.csv") == 0) break;
      ++kills;
      // What is left is resolved by an undo, itself killed on the way, or by a next change.
      (void)shell.run(failing + "undo --force");
      EXPECT_EQ(shell.run("toplistctl set 101 status=1"), 0) << shell.err();
      EXPECT_TRUE(data_of(site) == before || data_of(site) == after) << call << when;
      for (const auto& [path, bytes] : site.contents()) {
        EXPECT_FALSE(contains(path, ".toplistctl-") || contains(path, "undo.")) << path;
      }
      ASSERT_EQ(shell.run("toplistctl import trades t.csv && toplistctl undo"), 0);
      EXPECT_EQ(data_of(site), before);
    }
    ASSERT_EQ(shell.run("toplistctl undo"), 0);
  }
  EXPECT_GT(kills, 12U);
}

// Root acts as the site's owner, who may prepare links to files of others.
TEST(DataCommands, PlantedLinksGainNothing) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root could be misled";
  const TempDir roots;
  const std::string secret = roots.write("secret", "id,title\n");
  struct Link {
    const char* path;
    std::string target;
    const char* command;
  };
  const Link kLinks[] = {{"d/t/index", secret, "import trades t.csv"},
                         {"d/tl/tl.a1", secret, "set 101 title=x"},
                         {"d/h/t01.example.his", secret, "import figures f.csv"},
                         {"l/sys/toplist.lock", roots.path() + "/lock", "set 101 status=0"},
                         {"l/sys/undo.new", roots.path(), "import trades t.csv"},
                         {"l/sys/undo", roots.path(), "undo"}};
  for (const Link& link : kLinks) {
    const Site site;
    site.write("t.csv", "id,title\n101,x\n");
    site.write("f.csv", "id,period,rin\n101,99,5\n");
    fs::remove_all(site.path(link.path));
    fs::create_symlink(link.target, site.path(link.path));
    Shell shell(site);
    ASSERT_EQ(shell.run("chown -hR nobody ."), 0);
    EXPECT_EQ(shell.run(std::string("toplistctl ") + link.command), 2) << link.path;
    EXPECT_EQ(roots.read("secret"), "id,title\n") << link.path;
    EXPECT_EQ(std::distance(fs::directory_iterator(roots.path()), {}), 1) << link.path;
  }
  // New files are the owner's, and the lock is usable by the owner only.
  const Site site;
  Shell shell(site);
  ASSERT_EQ(shell.run("chown -R nobody . && umask 077 && toplistctl set 101 status=0 &&\n"
                      "stat -c '%U %a' l/sys/toplist.lock && stat -c %U d/t/index l/sys/undo"),
            0)
      << shell.err();
  EXPECT_TRUE(shell.out().ends_with("nobody 600\nnobody\nnobody\n")) << shell.out();
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
}

}  // namespace
}  // namespace toplist::test
