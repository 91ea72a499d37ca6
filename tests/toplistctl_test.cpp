// The built companion command: arguments and exit statuses.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>

#include "support/site.h"
#include "support/site_generator.h"
#include "toplistctl/lib/output/printable.h"
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
  for (const char* command : {"", "check", "show", "show trades", "show toplists", "show log",
                              "render", "why", "digest", "expand", "sample", "init", "harvest"}) {
    for (const char* flag : {" --help", " --version"}) {
      EXPECT_EQ(run_ctl(site, std::string(command) + flag), 0) << command << flag;
      EXPECT_NE(site.read("out"), "") << command << flag;
    }
  }
  for (const char* arguments :
       {"", "show", "show figures --period 5", "digest", "check --no", "check --site none",
        "render", "render x", "render --all", "render --all --into p x", "why", "why 1", "expand",
        "expand none", "expand --site . x.src", "init"}) {
    EXPECT_EQ(run_ctl(site, arguments), 2) << arguments;
  }
  constexpr struct {
    const char* arguments;
    const char* named;
  } kMistakes[] = {
      {"frob", "\"frob\""},
      {"show frob", "\"frob\""},
      {"render --frob", "--frob"},
      {"render --all --frob x", "\"--frob\""},
      {"check --ignore frob", "frob"},
      {"check --min-effect frob", "frob"},
      {"why", "trade is required; see --help"},
      {"import trades", "file is required"},
      {"status --json --prometheus", "--json excludes --prometheus"},
  };
  for (const auto& c : kMistakes) {
    EXPECT_EQ(run_ctl(site, c.arguments), 2) << c.arguments;
    EXPECT_NE(site.read("out").find(c.named), std::string::npos) << c.arguments;
  }
}

TEST(Toplistctl, CheckOfTheSampleSiteIsCleanUntilSomethingBreaks) {
  const Site site{Site::Bare{}};
  ASSERT_EQ(run_ctl(site, "sample s"), 0);
  EXPECT_EQ(run_ctl(site, "check --site s"), 0);
  EXPECT_EQ(site.read("out"), "Nothing found: 60 trades, 57 of them active, and 5 toplists.\n");
  write_site(site.path("s2"), {.trades = 12, .toplists = 5});
  EXPECT_EQ(run_ctl(site, "check --site s2"), 0);
  EXPECT_EQ(site.read("out"),
            "Nothing found: 12 trades, 12 of them active, and 5 toplists.\n"
            "Hidden: 5 less serious findings. --min-effect note shows all.\n");
  EXPECT_EQ(run_ctl(site, "check --site s2 --min-effect note"), 1);
  EXPECT_EQ(run_ctl(site, "check --site s2 --min-effect note --ignore rank-beyond-list"), 0);

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
  EXPECT_EQ(run_ctl(site, "check --site s"), 1);  // the template is not what its source gives
  EXPECT_EQ(run_ctl(site, "expand --install --site s s/d/tl/index.tpl.src"), 0);
  EXPECT_EQ(run_ctl(site, "check --site s"), 0);
}

struct Call {
  const char* arguments;
  int status;
  const char* output;
};

void expect_calls(const Site& site, std::initializer_list<Call> calls) {
  for (const Call& call : calls) {
    EXPECT_EQ(run_ctl(site, call.arguments), call.status) << call.arguments;
    EXPECT_EQ(site.read("out"), call.output) << call.arguments;
  }
}

TEST(Toplistctl, RenderShowsAPageBeforeItIsWritten) {
  const Site site;
  site.add_toplist("top", "%%tid_000%%\t\x1b\n");
  site.add_definition({"top.tpl", "off.html", "2", "3", ""});
  site.add_toplist("stray", "a\n50%%\n");
  const std::string skipped =
      "toplistctl: record 2: the next run does not write off.html: skipped: its build mode is "
      "\"3\"\n112\t\x1b\n";
  const std::string stray =
      "toplistctl: d/tl/stray.tpl, line 2: a \"%%\" there, or in a value put in there, is too "
      "close to the end of the line\n";
  const auto before = site.contents();
  expect_calls(site, {{"render top.tpl", 0, "101\t\x1b\n"},
                      {"render d/tl/top.tpl --record 2", 0, skipped.c_str()},
                      {"render off.html", 0, skipped.c_str()},
                      {"render stray.tpl", 1, stray.c_str()},
                      {"render top.tpl --record 3", 2,
                       "toplistctl: d/tl/tl has no toplist with the template or page top.tpl as "
                       "record 3\n"},
                      {"render top.tpl --diff", 1,
                       "--- top.html (not there)\n+++ top.html (next run)\n@@ -0,0 +1 @@\n"
                       "+101\t\x1b\n"}});
  site.remove("out");
  EXPECT_EQ(site.contents(), before);
  site.write("top.html", "100\n101\t\x1b\n");
  expect_calls(site,
               {{"render --all --diff", 1,
                 "--- top.html (now)\n+++ top.html (next run)\n@@ -1,2 +1 @@\n-100\n"
                 " 101\t\x1b\n"
                 "toplistctl: record 2: the next run does not write off.html: skipped: its "
                 "build mode is \"3\"\n"
                 "toplistctl: the next run ends early: at record 3, d/tl/stray.tpl, line 2: a "
                 "\"%%\" there, or in a value put in there, is too close to the end of the "
                 "line\n"}});
  EXPECT_EQ(run_ctl(site, "render top.tpl >page; mv page top.html; " TOPLISTCTL_PROGRAM
                          " render top.tpl --diff"),
            0);
}

TEST(Toplistctl, RenderIntoAFolderStaysInIt) {
  const Site site;
  site.write("d/tl/a.tpl", "a\n");
  for (const char* page : {"a.html", "l/../b.html", "c.html"}) {
    site.add_definition({"a.tpl", page, "1", "2", ""});
  }
  site.add_definition({"a.tpl", site.path("d.html"), "1", "2", ""});
  site.make_dir("p");
  std::filesystem::create_symlink("../d/tl/tl", site.path("p/c.html"));
  const std::string definitions = site.read("d/tl/tl");
  expect_calls(site, {{"render --all --into p", 2,
                       "toplistctl: l/../b.html is left out: its path holds \"..\"\n"},
                      {"render --all --into . 2>&1 | head -1", 0,
                       "toplistctl: a.html is left out: this is the site's own page, which only a "
                       "run writes\n"}});
  EXPECT_EQ(site.read("d/tl/tl"), definitions);
  EXPECT_EQ(site.read("p/c.html"), "a\n");
  EXPECT_EQ(site.read("p" + site.path("d.html")), "a\n");
  EXPECT_EQ(site.read("a.html") + site.read("b.html") + site.read("d.html"), "");
}

/// A toplist that shows only the trade 102, and everything that can keep another one out does.
struct SiteOfOne : Site {
  SiteOfOne() {
    add_trade({.id = -5, .domain = "off.example", .status = 2});
    add_toplist("top", "%%tid_000%%\n", "8");
    for (const char* setting : {"domains=t02.example", "group=g", "skipdomains=t01.example",
                                "rin60=-7", "uin60=11", "ctt24=-2", "cprod=25", "out24=64"}) {
      add_setting("top", setting);
    }
    write("d/gr/g", ctl::encode_group("g", std::array{102}));
    write("l/thumbs/t02.example.jpg", "");
    write("d/tl/vantaig", ctl::encode_harvest_file({.thumbnail_optional = "0"}));
    write("d/t/sum", read("d/t/sum").append("cut|102|"));
  }
};

TEST(Toplistctl, WhyTellsAllThatKeepsATradeOut) {
  const SiteOfOne site;
  const std::string all_drops =
      "101 t01.example\n"
      "  address    http://t01.example/\n"
      "  database   record 1 of d/t/index, active\n"
      "  figures    record 1 of d/t/sum\n"
      "  history    d/h/t01.example.his\n"
      "  columns    4 in d/tl/tl.a1\n"
      "  thumbnail  no l/thumbs/t01.example.jpg, required\n"
      "\n"
      "top.html (record 1, d/tl/top.tpl)\n"
      "  not shown: the setting \"domains\" does not name its domain\n"
      "  not shown: the setting \"group\" names a group without it\n"
      "  not shown: it has no thumbnail, which is required\n"
      "  not shown: the setting \"skipdomains\" names its domain\n"
      "  not shown: uin60 is 10, below 11\n"
      "  not shown: cprod is 0, below 25\n";
  const std::string inactive = R"({
  "id": -5,
  "domain": "off.example",
  "active": false,
  "toplists": [
    {
      "record": 1,
      "template": "d/tl/top.tpl",
      "page": "top.html",
      "built": true,
      "rank": null,
      "place": false,
      "figure": null,
      "reasons": [
        {
          "filter": "inactive",
          "figure": null,
          "minimum": null
        }
      ]
    }
  ]
}
)";
  expect_calls(site, {{"why t01.example", 1, all_drops.c_str()},
                      {"why off.example --json", 1, inactive.c_str()},
                      {"why 102 --toplist top.html | tail -4", 0,
                       "top.html (record 1, d/tl/top.tpl)\n"
                       "  rank 0, number 1 of 1, with clk60/rin60 0\n"
                       "  above: none\n"
                       "  below: none\n"},
                      {"why 101 --toplist top.tpl --json | tail -8 | head -3", 0,
                       "          \"filter\": \"cprod\",\n"
                       "          \"figure\": 0,\n"
                       "          \"minimum\": 25\n"}});
}

TEST(Toplistctl, WhyTellsOfAllTradesOfADomainAndWhoStandsBeside) {
  const Site site;
  site.add_trade({.id = 7, .domain = "t03.example", .status = 0});
  site.add_toplist("top", "%%tid_001%%\n", "1");
  EXPECT_EQ(run_ctl(site, "why t03.example"), 1);
  const std::string text = site.read("out");
  EXPECT_TRUE(text.starts_with("103 t03.example\n"));
  for (const char* part :
       {"\n7 t03.example\n", "\n  database   record 13 of d/t/index, not active: status 0\n",
        "  rank 2, number 3 of 12, with rin60 100, but the template has no such place\n"
        "  above: 102 t02.example with 110\n"
        "  below: 104 t04.example with 90\n"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << " in " << text;
  }
  EXPECT_EQ(run_ctl(site, "why t03.example --json"), 1);
  EXPECT_EQ(site.read("out").substr(0, 2), "[\n");
  EXPECT_EQ(run_ctl(site, "why 102 --toplist top.tpl"), 0);
}

TEST(Toplistctl, WhatATerminalWouldActUponIsMasked) {
  const char* text = "a\x1b[1m \xC2\x9B \xC3\xA9\t\r\x7F\n";
  EXPECT_EQ(ctl::printable(text), "a?[1m ? \xC3\xA9????");
  EXPECT_EQ(ctl::printable_lines(text), "a?[1m ? \xC3\xA9\t??\n");
}

TEST(Toplistctl, ExpandTellsFaultsWhereTheyAreInTheSources) {
  const Site site{Site::Bare{}};
  site.write("page.tpl.src",
             "<!-- repeat 0-1 -->\n{place} <!-- x --> %%xyz_NNN%%\n"
             "<!-- include row -->\n<!-- end repeat -->\n");
  site.write("row", "%%tid_NN%% of them all\n");
  EXPECT_EQ(run_ctl(site, "expand page.tpl.src --output page.tpl"), 1);
  const std::string found = site.read("out");
  EXPECT_TRUE(
      found.starts_with("toplistctl: page.tpl.src:2:20: unknown-name: \"%%xyz_000%%\"\n"
                        "toplistctl: row:1:1: malformed-tag: \"%%tid_NN%% of them a\"\n"
                        "toplistctl: unknown-name: "))
      << found;
  EXPECT_EQ(site.read("page.tpl"), "");
  EXPECT_EQ(run_ctl(site, "expand page.tpl.src --output page.tpl --force"), 0);
  EXPECT_EQ(site.read("page.tpl"),
            "1 <!-- x --> %%xyz_000%%\n%%tid_NN%% of them all\n"
            "2 <!-- x --> %%xyz_001%%\n%%tid_NN%% of them all\n");

  site.write("row", "%%tid_NNN%% of them all\n");
  EXPECT_EQ(run_ctl(site, "expand page.tpl.src --output row"), 2);  // a source
  EXPECT_EQ(run_ctl(site, "expand page.tpl.src --output page.tpl"), 0);
  EXPECT_EQ(run_ctl(site, "expand row"), 0);
  EXPECT_TRUE(site.read("out").starts_with("toplistctl: row:1:1: odd-rank: \"%%tid_NNN%%\"\n"));
  EXPECT_TRUE(site.read("out").ends_with("\n%%tid_NNN%% of them all\n"));

  site.write("row", "<!-- include -->\n");
  EXPECT_EQ(run_ctl(site, "expand page.tpl.src --output page.tpl --force"), 1);
  EXPECT_TRUE(site.read("out").starts_with("toplistctl: row:1:1: no such directive"));
  EXPECT_EQ(site.read("page.tpl").substr(0, 1), "1");
}

TEST(Toplistctl, ExpandInstallsATemplateThatARunThenBuilds) {
  const Site site;
  site.add_toplist("top", "old\n");
  site.add_definition({"top.tpl", "second.html", "2", "1", "old"});
  site.write("d/tl/top.tpl.src",
             "<!-- repeat 0-2 -->\n{place}: %%tid_NNN%%\n<!-- end repeat -->\n");
  EXPECT_EQ(run_ctl(site, "expand --install d/tl/top.tpl.src"), 0);
  EXPECT_EQ(site.read("out"), sha1_file_hex(site.path("d/tl/top.tpl")) + "  top.tpl\n");
  EXPECT_EQ(site.run(), RunResult{});
  EXPECT_EQ(site.read("top.html"), "1: 101\n2: 102\n3: 103\n");
  EXPECT_EQ(site.read("second.html"), "1: 112\n2: 111\n3: 110\n");

  auto before = site.contents();
  site.write("d/tl/top.tpl.src", "%%tid_000%% is 50%%\n");
  EXPECT_EQ(run_ctl(site, "expand --install d/tl/top.tpl.src"), 1);
  EXPECT_EQ(run_ctl(site, "expand --install d/tl/none.src"), 2);
  site.write("tl.src", "not the definitions\n");
  EXPECT_EQ(run_ctl(site, "expand --install tl.src"), 2);
  site.write("top", "no suffix\n");
  EXPECT_EQ(run_ctl(site, "expand --install top"), 2);
  auto after = site.contents();
  for (const char* changed : {"d/tl/top.tpl.src", "tl.src", "top", "out"}) {
    before.erase(changed);
    after.erase(changed);
  }
  EXPECT_EQ(after, before);
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
