// What a run makes of broken sites and short resources: the documented failure, never a crash, a
// hang or a lost page.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

#include "run/run_driver.h"
#include "support/sanitized.h"
#include "support/site.h"

namespace toplist::test {
namespace {

namespace fs = std::filesystem;

/// Every kind of file that a run of faulty_site() reads.
constexpr const char* kInputs[] = {"d/t/index", "d/t/sum",      "d/h/t01.example.his",
                                   "d/tl/tl",   "d/tl/tl.ext",  "d/tl/tl.a1",
                                   "d/gr/few",  "d/tl/vantaig", "d/tl/free.tpl"};

/// A site of which a run reads every kind of file. Its toplist "free" has no check value.
void fill(const Site& site) {
  site.write("d/gr/few", ctl::encode_group("few", std::vector<std::int32_t>{101, 102, 103}));
  site.add_toplist("first", "%%tid_000%% %%tit_001%%\n<tlxt>\n</tlxt>\n%%rin60_002%%\n");
  site.write("d/tl/free.tpl", "<%%dom_000%%>\n<%%att00_001%%>\n");
  site.add_definition(
      {.template_name = "free.tpl", .output_path = "free.html", .order_by = "12", .mode = "2"});
  site.add_setting("first", "group=few");
  site.add_setting("free", "rin60=20");
}

/// Starts a child process that does `body` within the site, its output thrown away.
pid_t start_child(const Site& site, const std::function<void()>& body) {
  const pid_t child = ::fork();
  if (child != 0) return child;
  ::alarm(300);  // a hang ends the child, not the test run
  const bool ready =
      std::freopen("/dev/null", "w", stdout) != nullptr && ::chdir(site.path("").c_str()) == 0;
  if (ready) body();
  ::_exit(ready ? 0 : 2);
}

/// Returns how the child ended, as wait() tells.
int in_child(const Site& site, const std::function<void()>& body) {
  int status = -1;
  ::waitpid(start_child(site, body), &status, 0);
  return status;
}

void limit(decltype(RLIMIT_AS) resource, rlim_t most) {
  const rlimit limits{most, most};
  ::setrlimit(resource, &limits);
}

void become_program() { ::execl(TOPLIST_PROGRAM, "toplist", "run", nullptr); }

TEST(Fault, EveryInputMayBeCutAnywhere) {
  const Site site;
  fill(site);
  ASSERT_EQ(site.run(), RunResult{});
  const std::string first = site.read("first.html"), free = site.read("free.html");
  ASSERT_NE(first, "");
  for (const std::string path : kInputs) {
    const std::string whole = site.read(path);
    const int status = in_child(site, [&path, size = whole.size()] {
      for (std::size_t left = size; left-- > 0;) {
        fs::resize_file(path, left);
        try {
          run_driver();
        } catch (const std::out_of_range&) {
          if (path != "d/tl/free.tpl") ::_exit(3);  // only a template may end within a tag
        }
      }
    });
    EXPECT_EQ(status, 0) << path << " cut to " << fs::file_size(site.path(path)) << " bytes";
    site.write(path, whole);
  }
  ASSERT_EQ(site.run(), RunResult{});
  EXPECT_EQ(site.read("first.html"), first);
  EXPECT_EQ(site.read("free.html"), free);
}

// A directory reads as an empty file; only an empty database is an error.
TEST(Fault, AnyInputMayBeADirectory) {
  for (const std::string path : kInputs) {
    const Site site;
    fill(site);
    site.replace_by_dir(path);
    const RunResult result = site.run();
    EXPECT_EQ(result, RunResult{.out = result.out}) << path;
    EXPECT_EQ(!site.log().empty(), path == "d/t/index") << path;
  }
}

// What these do is in data/run_sessions.txt.
TEST(Fault, AFullDiskTakesThePageAndTheLogButNotTheRun) { expect_own_session(); }
TEST(Fault, FilesAtTheLimitOfTheirSizeTakeWhatTheyHoldButNotTheRun) { expect_own_session(); }

TEST(Fault, AFewDescriptorsAreEnough) {
  const Site site;
  fill(site);
  const int status = in_child(site, [] {
    limit(RLIMIT_NOFILE, 32);
    run_driver();
  });
  EXPECT_EQ(status, 0);
  EXPECT_NE(site.read("first.html"), "");
  EXPECT_EQ(site.log(), "");
}

TEST(Fault, WhatDoesNotFitIntoMemoryIsLogged) {
#ifdef TOPLIST_SANITIZED
  GTEST_SKIP() << "sanitizers end the process themselves when an allocation fails";
#endif
  for (const char* path : {"d/t/index", "d/t/sum", "d/tl/free.tpl"}) {
    const Site site;
    fill(site);
    fs::resize_file(site.path(path), 1UL << 40U);  // of which the disk holds next to nothing
    const int status = in_child(site, [] {
      limit(RLIMIT_AS, 1UL << 29U);
      become_program();
    });
    EXPECT_EQ(status, 0) << path;
    EXPECT_EQ(site.log(), "|<time>|toplist|10|not enough memory|1||||\n") << path;
  }
}

TEST(Fault, ARunAfterAKilledOneWritesThePages) {
  const Site site;
  fill(site);
  ASSERT_EQ(site.run(), RunResult{});
  const std::string first = site.read("first.html"), free = site.read("free.html");
  for (int delay = 0; delay < 3000; delay += 150) {
    const pid_t child = start_child(site, become_program);
    std::this_thread::sleep_for(std::chrono::microseconds(delay));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
  }
  EXPECT_EQ(site.run(), RunResult{});
  EXPECT_EQ(site.read("first.html"), first);
  EXPECT_EQ(site.read("free.html"), free);
  EXPECT_EQ(site.log(), "");
}

}  // namespace
}  // namespace toplist::test
