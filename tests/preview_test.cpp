// toplistctl render and why against runs of the built program, in sites with random faults.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "support/random_site.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_view/standing.h"
#include "util/shell.h"
#include "util/text.h"

namespace toplist::test {
namespace {

namespace fs = std::filesystem;
using namespace toplist::ctl;

/// How many random sites; more are tried by hand.
std::uint64_t site_count() {
  const char* count = std::getenv("TOPLIST_RANDOM_SITES");
  return count == nullptr ? 25 : std::strtoull(count, nullptr, 10);
}

std::string pages_folder(const TempDir& dir) { return dir.path() + "/pages"; }

int render_all(const Site& site, const TempDir& dir) {
  const std::string command =
      TOPLISTCTL_PROGRAM " render --all --site " + shell_word(site.path("")) + " --into " +
      shell_word(pages_folder(dir)) + " 2>" + shell_word(dir.path() + "/err");
  return WEXITSTATUS(std::system(command.c_str()));
}

/// Where all trades stand.
std::vector<TradeStanding> all_standings(const SiteView& view) {
  std::set<std::string> ids;
  for (const TradeRecord& trade : view.run.trades) ids.insert(std::to_string(trade.trade_id));
  std::vector<TradeStanding> trades;
  for (const std::string& id : ids) {
    auto found = standings_of(view, id, "");
    std::move(found->begin(), found->end(), std::back_inserter(trades));
  }
  return trades;
}

/// A run, and what was foreseen of it in the same second.
struct Try {
  explicit Try(std::uint64_t seed) : site(seed), before(site.contents()) {
    {
      const InSite in_site(site);
      view = std::make_unique<SiteView>();
      standings = all_standings(*view);
    }
    const std::time_t start = std::time(nullptr);
    status = render_all(site, rendered);
    result = site.run();
    in_one_second = std::time(nullptr) == start;
  }

  RandomSite site;
  std::map<std::string, std::string> before;
  std::unique_ptr<SiteView> view;
  std::vector<TradeStanding> standings;
  TempDir rendered;
  int status = 0;  ///< of `render --all`
  RunResult result;
  bool in_one_second = false;
};

/// What a site holds once the pages that were rendered for it are laid over what it held.
std::map<std::string, std::string> with_pages(const Try& tried) {
  auto contents = tried.before;
  const std::filesystem::path folder = pages_folder(tried.rendered);
  const std::string root = tried.site.path("").substr(1);  // of absolute pages, below the folder
  if (!std::filesystem::exists(folder)) return contents;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    std::string name = entry.path().lexically_relative(folder);
    const std::string text = tried.rendered.read("pages/" + name);
    if (name.starts_with(root)) name = name.substr(root.size());
    contents[name] = text;
  }
  return contents;
}

bool ended_early(const Try& tried) {
  return tried.result.signal == SIGABRT || !tried.result.out.empty() ||
         contains(tried.site.log(), "|1||||\n") || tried.view->run.rows.empty() ||
         tried.view->toplists.empty();
}

/// The ids in a page, by rank.
std::map<std::size_t, std::string> ids_in(const std::string& page) {
  static const std::regex kLine("rank (\\d+): (\\d+) ");
  std::map<std::size_t, std::string> ids;
  for (std::sregex_iterator i(page.begin(), page.end(), kLine), end; i != end; ++i) {
    ids[std::stoul((*i)[1])] = (*i)[2];
  }
  return ids;
}

/// Whether the page holds what this toplist shows after the run.
bool holds_page(const SiteView& view, const ToplistView& toplist) {
  const auto& path = toplist.definition->output_path;
  return toplist.next_run.is_built() &&
         std::none_of(view.toplists.begin(), view.toplists.end(), [&](const ToplistView& other) {
           return other.record > toplist.record && other.definition->output_path == path &&
                  other.next_run.is_built();
         });
}

/// The ids in a toplist's page, by their ranks.
std::map<std::size_t, std::string> ids_told(const Try& tried, std::size_t index) {
  std::map<std::size_t, std::string> ids;
  for (const TradeStanding& trade : tried.standings) {
    const Standing& standing = trade.toplists.at(index);
    if (standing.is_shown()) ids[*standing.rank] = std::to_string(trade.trade->trade_id);
  }
  return ids;
}

std::unique_ptr<Try> try_in_one_second(std::uint64_t seed) {
  auto tried = std::make_unique<Try>(seed);
  while (!tried->in_one_second) tried = std::make_unique<Try>(seed);
  return tried;
}

TEST(Preview, IsWhatARunDoesInTheSameSecond) {
  for (std::uint64_t seed = 0; seed < site_count(); ++seed) {
    SCOPED_TRACE(seed);
    const auto tried = try_in_one_second(seed);
    const std::string told = tried->rendered.read("err");
    if (contains(told, " is the page of record ")) continue;
    EXPECT_EQ(tried->site.contents(), with_pages(*tried)) << told;
    EXPECT_EQ(tried->status, ended_early(*tried) ? kExitFindings : 0) << told;
    for (std::size_t i = 0; i < tried->view->toplists.size(); ++i) {
      const ToplistView& toplist = tried->view->toplists[i];
      if (!holds_page(*tried->view, toplist)) continue;
      std::string page = toplist.definition->output_path;
      if (page.starts_with('/')) page = "absolute.html";
      EXPECT_EQ(ids_in(tried->site.read(page)), ids_told(*tried, i)) << toplist.record;
    }
  }
}

TEST(Preview, DiffIgnoresPicksAndIntoLinksWhatPagesNeed) {
  auto trades = Site::default_trades();
  trades[0].columns[0] = "one;two;three";
  trades[1].columns[0] = "a;b";
  const Site site(trades);
  site.add_toplist("top",
                   "%%tit_000%% %%tit_001%%\n<link href=\"style.css?2\"><img src='d/tl/tl'>\n"
                   "<img src=/outside.png><a href=\"../x\">\n");
  const std::string rest =
      "<link href=\"style.css?2\"><img src='d/tl/tl'>\n<img src=/outside.png><a href=\"../x\">\n";
  site.write("style.css", "@import url(more.css); b { background: url('pictures/b.png') }\n");
  site.make_dir("pictures");
  for (const char* name : {"more.css", "pictures/b.png", "unused.css"}) site.write(name, name);
  fs::create_symlink("/etc/hostname", site.path("outside.png"));
  for (const auto& [line, status] :
       {std::pair("one a\n", 0), {"two b\n", 0}, {"three a\n", 0}, {"four a\n", kExitFindings}}) {
    site.write("top.html", line + rest);
    for (const char* what : {"top.tpl", "--all"}) {
      const auto result =
          site.start({.program = TOPLISTCTL_PROGRAM, .arguments = {"render", what, "--diff"}});
      EXPECT_EQ(result.status, status) << what << result.out << result.err;
    }
  }
  const TempDir dir;
  fs::create_directory(pages_folder(dir));
  (void)dir.write("pages/more.css", "mine");
  EXPECT_EQ(render_all(site, dir), 0);
  std::set<std::string> links;
  for (const auto& entry : fs::recursive_directory_iterator(pages_folder(dir))) {
    if (entry.is_symlink()) links.insert(entry.path().lexically_relative(pages_folder(dir)));
  }
  EXPECT_EQ(links, (std::set<std::string>{"style.css", "pictures/b.png"}));
  EXPECT_EQ(dir.read("pages/more.css"), "mine");
  EXPECT_EQ(dir.read("pages/pictures/b.png"), "pictures/b.png");
}

}  // namespace
}  // namespace toplist::test
