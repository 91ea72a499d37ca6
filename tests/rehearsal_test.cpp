// What toplistctl foresees of the next run: what becomes of each toplist, and the pages' bytes.

#include "toplistctl/lib/site_view/rehearsal.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/site.h"
#include "support/text_cases.h"
#include "toplistctl/lib/site_view/site_view.h"
#include "util/text.h"

namespace toplist::test {
namespace {

using ctl::SiteView;

/// Three toplists, "a" to "c", which are always built, into "a.html" to "c.html".
struct SiteWithThree : Site {
  SiteWithThree() {
    for (const std::string name : {"a", "b", "c"}) {
      write("d/tl/" + name + ".tpl", "%%tid_000%% %%tid_001%%\n");
      add_definition({name + ".tpl", name + ".html", name == "b" ? "2" : "1", "2", ""});
    }
  }
};

/// What the three come to, one a line; those that are alike to the end once.
std::string foreseen(const SiteView& view) {
  std::string text;
  std::string last;
  for (const auto& [definition, record, next_run, allowed, filters, ranking, passing, dropped] :
       view.toplists) {
    const std::string at = next_run.line == 0 ? "" : fmt::format(" (line {})", next_run.line);
    const std::string line = next_run.text() + at + "\n";
    if (line == last && !next_run.is_built()) continue;
    text += last = line;
  }
  return text;
}

// Each case is a shell command that breaks the site, and what is foreseen then.
TEST(Rehearsal, TellsOfEachToplistWhatARunDoes) {
  for (TextCase& c : read_text_cases("rehearsal_cases.txt")) {
    SCOPED_TRACE(c.name);
    const SiteWithThree site;
    const std::string command = "cd " + site.path("") + "\n" + c.texts["plant"];
    ASSERT_EQ(std::system(command.c_str()), 0);
    const bool endless = contains(c.name, "without end");
    const auto before = endless ? decltype(site.contents()){} : site.contents();
    auto expected = before;
    {
      const InSite in_site(site);
      const SiteView view(
          kSteps, [&](const std::string& path, std::string_view page) { expected[path] = page; });
      EXPECT_EQ(foreseen(view), c.texts["foreseen"]);
    }
    EXPECT_EQ(site.log(), "");
    if (endless) continue;
    EXPECT_EQ(site.contents(), before);
    if (contains(c.texts["foreseen"], "foreseen")) continue;
    (void)site.run();
    EXPECT_EQ(site.contents(), expected);
  }
}

}  // namespace
}  // namespace toplist::test
