// The built companion command: arguments and exit statuses.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>

#include "sample/sample_site.h"
#include "support/site.h"
#include "util/sha1.h"

namespace toplist::test {
namespace {

/// The exit status; what it prints goes to the site's file "out".
int run_ctl(const Site& site, const std::string& arguments) {
  const std::string command =
      "cd " + site.path("") + " && " TOPLISTCTL_PROGRAM " " + arguments + " >out 2>&1";
  return WEXITSTATUS(std::system(command.c_str()));
}

TEST(Toplistctl, HelpAndVersionAreThereOnEveryLevel) {
  const Site site{Site::Bare{}};
  for (const char* command :
       {"", "check", "show", "show trades", "show toplists", "show log", "digest", "sample"}) {
    for (const char* flag : {" --help", " --version"}) {
      EXPECT_EQ(run_ctl(site, std::string(command) + flag), 0) << command << flag;
      EXPECT_NE(site.read("out"), "") << command << flag;
    }
  }
  for (const char* arguments : {"", "show", "digest", "check --no", "check --site none"}) {
    EXPECT_EQ(run_ctl(site, arguments), 2) << arguments;
  }
}

TEST(Toplistctl, CheckOfTheSampleSiteIsCleanUntilSomethingBreaks) {
  const Site site{Site::Bare{}};
  ASSERT_EQ(site::write_sample_site(site.path("s"), {.thumbnails = site::Thumbnails::none}), "");
  EXPECT_EQ(run_ctl(site, "check --site s"), 0);
  EXPECT_EQ(site.read("out"), "Nothing found: 60 trades, 57 of them active, and 5 toplists.\n");

  site.write("s/d/tl/index.tpl", "%%tid_000%%\n");
  EXPECT_EQ(run_ctl(site, "check --site s --json"), 1);
  EXPECT_NE(site.read("out").find("\"kind\": \"check-value\""), std::string::npos);
  const std::string definitions = site.read("s/d/tl/tl");
  EXPECT_EQ(run_ctl(site, "digest --site s index.tpl"), 0);
  EXPECT_EQ(site.read("s/d/tl/tl"), definitions);
  EXPECT_EQ(run_ctl(site, "digest --update --site s index.tpl none.tpl"), 2);
  EXPECT_EQ(site.read("s/d/tl/tl"), definitions);
  EXPECT_EQ(run_ctl(site, "digest --update --site s d/tl/index.tpl"), 0);
  EXPECT_EQ(site.read("out"), sha1_file_hex(site.path("s/d/tl/index.tpl")) + "  index.tpl\n");
  EXPECT_EQ(run_ctl(site, "check --site s"), 0);
}

TEST(Toplistctl, ALogThatIsNotThereYetIsEmpty) {
  const Site site;
  EXPECT_EQ(run_ctl(site, "show log --json"), 0);
  EXPECT_EQ(site.read("out"), "[]\n");
  site.remove("l/sys");
  EXPECT_EQ(run_ctl(site, "show log"), 2);
}

}  // namespace
}  // namespace toplist::test
