// What toplistctl foresees of the next run: what becomes of each toplist, and the pages' bytes.

#include "toplistctl/lib/site_view/rehearsal.h"

#include <gtest/gtest.h>

#include <string>

#include "support/site.h"
#include "toplistctl/lib/site_view/site_view.h"
#include "util/text.h"

namespace toplist::test {
namespace {

using ctl::SiteView;

/// Three toplists, "a" to "c", which are always built, into "a.html" to "c.html".
struct SiteWithThree : Site {
  SiteWithThree() {
    for (const char* name : {"a", "b", "c"}) {
      write("d/tl/" + std::string(name) + ".tpl", "%%tid_000%% %%tid_001%%\n");
    }
    define("b.tpl", "b.html");
  }

  /// Defines "a", a toplist of this template, page and mode, and "c".
  void define(const std::string& name, const std::string& page, const std::string& mode = "2",
              const std::string& first_page = "a.html") const {
    write("d/tl/tl", "");
    add_definition({"a.tpl", first_page, "1", "2", ""});
    add_definition({name, page, "2", mode, ""});
    add_definition({"c.tpl", "c.html", "3", "2", ""});
  }
};

struct Ending {
  std::string foreseen;  ///< of the three toplists, one a line
  void (*plant)(const SiteWithThree& site);
};

/// What is foreseen when the run ends at the second toplist.
std::string end_of_run(const std::string& reason) {
  return "built\nthe run ends here: " + reason + "\nthe run ends before: at record 2, " + reason +
         "\n";
}

std::string no_prospect(const std::string& reason) {
  return "built\ncannot be foreseen: " + reason + "\ncannot be foreseen: at record 2, " + reason +
         "\n";
}

const Ending kEndings[] = {
    {"built\nbuilt\nbuilt\n", [](const SiteWithThree&) {}},
    {"built\nskipped: its build mode is \"3\"\nbuilt\n",
     [](const SiteWithThree& s) { s.define("b.tpl", "b.html", "3"); }},
    {"built\nskipped: its check value is not the template's\nbuilt\n",
     [](const SiteWithThree& s) { s.define("none.tpl", "b.html", "1"); }},

    // --- ends at a toplist ---
    {end_of_run("cannot open d/tl/none.tpl: No such file or directory"),
     [](const SiteWithThree& s) { s.define("none.tpl", "b.html"); }},
    {end_of_run("cannot open none/b.html: No such file or directory"),
     [](const SiteWithThree& s) { s.define("b.tpl", "none/b.html"); }},
    {end_of_run("cannot open d/gr: Is a directory"),
     [](const SiteWithThree& s) { s.define("b.tpl", "d/gr"); }},
    {end_of_run(
         "d/tl/b.tpl, line 2: a \"%%\" there, or in a value put in there, is too close to the "
         "end of the line"),
     [](const SiteWithThree& s) { s.write("d/tl/b.tpl", "%%tid_000%%\n50%%\n"); }},
    {no_prospect("d/tl/b.tpl is the page of record 1"),
     [](const SiteWithThree& s) { s.define("b.tpl", "b.html", "2", "d/tl/../tl/b.tpl"); }},
    {no_prospect("d/gr/g is the page of record 1"),
     [](const SiteWithThree& s) {
       s.define("b.tpl", "b.html", "2", "d/gr/g");
       s.add_setting("b", "group=g");
     }},

    // --- ends before the toplists ---
    {"the run ends before: cannot open d/t/index: No such file or directory\n",
     [](const SiteWithThree& s) { s.remove("d/t/index"); }},
    {"the run ends before: database was not fully loaded\n",
     [](const SiteWithThree& s) {
       s.write("d/t/index", s.read("d/t/index").substr(0, 9UL * 996));
     }},
    {"the run ends before: cannot open d/tl/vantaig: No such file or directory\n",
     [](const SiteWithThree& s) {
       s.remove("d/tl/vantaig");
       s.remove("d/t/sum");  // the first end counts
     }},
    {"the run ends before: no trade is active\n",
     [](const SiteWithThree& s) { s.write("d/t/index", std::string(10UL * 996, '\0')); }},
    {"the run ends before: cannot open d/t/sum: No such file or directory\n",
     [](const SiteWithThree& s) { s.remove("d/t/sum"); }},
    {"the run ends before: cannot open d/tl/tl.ext: No such file or directory\n",
     [](const SiteWithThree& s) { s.remove("d/tl/tl.ext"); }},
    {"the run ends before: cannot open l/none/: No such file or directory\n",
     [](const SiteWithThree& s) {
       s.write("d/tl/vantaig",
               ctl::encode_harvest_file({.thumb_dir = "l/none/", .thumbnail_optional = "0"}));
     }},
};

/// What the three come to, one a line; those that are alike to the end once.
std::string foreseen(const SiteView& view) {
  std::string text;
  std::string last;
  for (const ctl::ToplistView& toplist : view.toplists) {
    const std::string line = toplist.next_run.text() + "\n";
    if (line == last && !toplist.next_run.is_built()) continue;
    text += last = line;
  }
  return text;
}

TEST(Rehearsal, TellsOfEachToplistWhatARunDoes) {
  for (const Ending& ending : kEndings) {
    SCOPED_TRACE(ending.foreseen);
    const SiteWithThree site;
    ending.plant(site);
    const auto before = site.contents();
    auto expected = before;
    {
      const InSite in_site(site);
      const SiteView view(
          kSteps, [&](const std::string& path, std::string_view page) { expected[path] = page; });
      EXPECT_EQ(foreseen(view), ending.foreseen);
    }
    EXPECT_EQ(site.contents(), before);
    EXPECT_EQ(site.log(), "");
    if (contains(ending.foreseen, "foreseen")) continue;
    (void)site.run();
    EXPECT_EQ(site.contents(), expected);
  }
}

TEST(Rehearsal, TellsTheLineOfAStrayMark) {
  const SiteWithThree site;
  site.write("d/tl/b.tpl", "%%tid_000%%\n50%%\n");
  const InSite in_site(site);
  const SiteView view;
  ASSERT_EQ(view.toplists.size(), 3U);
  EXPECT_EQ(view.toplists[1].next_run.line, 2U);
  EXPECT_EQ(view.toplists[1].next_run.word(), "stopped");
  EXPECT_EQ(view.toplists[2].next_run.line, 0U);
}

}  // namespace
}  // namespace toplist::test
