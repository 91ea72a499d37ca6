// What the companion command does about harvests: a root of their own, and a trial of one.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "support/site.h"
#include "support/text_cases.h"
#include "toplistctl/commands/try_harvest.h"
#include "toplistctl/lib/new_site/harvest_root.h"

namespace toplist::test {
namespace {

namespace fs = std::filesystem;
using namespace toplist::ctl;

/// A site that harvests its last trade, "t12.example", with a stand-in for the downloader.
struct HarvestedSite : Site {
  HarvestedSite() {
    for (const char* name : {"bin", "l/sys/net"}) make_dir(name);
    add_stand_in("fetch-one-picture", "fetch");
    write("d/tl/vantaig",
          ctl::encode_harvest_file({.image_tool = ":", .fetch_method = "2", .harvest = "1"}));
    add_toplist("top", "%%tid_000%%\n");
  }

  [[nodiscard]] std::string tools() const { return path("bin") + ":/usr/bin:/bin"; }

  /// Replaces a file as the site's own programs may: by another one of its name.
  void replace(const std::string& name, const std::string& bytes) const {
    write("new", bytes);
    fs::rename(path("new"), path(name));
  }

  /// The exit status; what it prints goes to the file "out".
  [[nodiscard]] int run_ctl(const std::string& arguments) const {
    const std::string command = "cd " + path("") + " && PATH=" + tools() + " " TOPLISTCTL_PROGRAM +
                                " " + arguments + " >out 2>&1";
    return WEXITSTATUS(std::system(command.c_str()));
  }
};

const std::string kThumbnail(3000, 'p');

TEST(HarvestRoot, HarvestsForTheSiteAndBuildsNoPage) {
  const HarvestedSite site;
  const Site root{Site::Bare{}};
  ASSERT_TRUE(create_harvest_root(site.path(""), root.path("")).has_value());
  const Start start{.environment = {"PATH=" + site.tools()}};
  EXPECT_EQ(root.start(start), RunResult{});
  EXPECT_EQ(site.read("l/thumbs/t12.example.jpg"), kThumbnail + '\n');
  EXPECT_EQ(site.read("top.html"), "");
  EXPECT_EQ(site.log(), "");
  EXPECT_EQ(site.run_ctl("check --path " + site.tools() + " --site " + root.path("")), 0)
      << site.read("out");

  // The links hold when files are replaced, and also when the log comes into being behind one.
  std::string index = site.read("d/t/index");
  ctl::append_trade(index, ctl::make_trade(113, "new.example", "http://new.example/"));
  site.replace("d/t/index", index);
  EXPECT_EQ(root.start(start), RunResult{});
  EXPECT_EQ(site.read("l/thumbs/new.example.jpg"), kThumbnail + '\n');
  EXPECT_EQ(site.log(), "|<time>|toplist|1|d&#47;h&#47;new.example.his|0||||\n");
}

TEST(HarvestRoot, IsLaidOutWhollyOrNotAtAll) {
  const struct {
    const char *thumb_dir, *link;  ///< nullptr: refused; empty: none is needed
  } cases[] = {{"l/thumbs/", "l/thumbs"}, {"thumbs/x_", "thumbs"}, {"./a/b/", "a/b"},
               {"/srv/thumbs/", ""},      {"x_", nullptr},         {"", nullptr},
               {"./", nullptr},           {"../thumbs/", nullptr}, {"l/", nullptr},
               {"d/t/x/", nullptr},       {"site/", nullptr}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.thumb_dir);
    const HarvestedSite site;
    site.write("d/tl/vantaig", ctl::encode_harvest_file({.thumb_dir = c.thumb_dir}));
    const auto before = site.contents();
    const std::string folder = c.link == nullptr ? "" : c.link;
    EXPECT_EQ(create_harvest_root(site.path(""), site.path("root")).has_value(), c.link != nullptr);
    EXPECT_EQ(fs::is_symlink(site.path("root/" + folder)), !folder.empty());
    site.remove("root");
    EXPECT_EQ(site.contents(), before);
  }
  const HarvestedSite site;
  EXPECT_FALSE(create_harvest_root(site.path("bin"), site.path("root")).has_value());
  EXPECT_FALSE(fs::exists(site.path("root")));
}

using Web = std::map<std::string, RawResponse>;  ///< by address; others are unknown hosts

/// What a trial of the trade's harvest reports.
std::string trace(const Web& web, const ctl::HarvestFile& config, std::size_t index,
                  std::string_view domain = "a.e") {
  std::vector<TradeRecord> trades(12);
  trades[index] = ctl::make_trade(7, domain, "http://www.a.e/in");
  std::string text;
  const bool stored = try_harvest(
      trades, index, parse_harvest_config(ctl::encode_harvest_file(config), ""),
      [&web](const std::string& /*host*/, const std::string& url) {
        const auto found = web.find(url);
        return found == web.end() ? RawResponse{.failure = FetchFailure::unknown_host}
                                  : found->second;
      },
      [&text](const std::string& lines) { text += lines; });
  EXPECT_EQ(stored, text.find("taken: a run stores") != std::string::npos);
  return text;
}

TEST(TryHarvest, ReportsWhyEachPictureIsRefusedOrTaken) {
  const auto response = [](const std::string& body) {
    return RawResponse{"HTTP/1.1 200 OK\r\n\r\n" + body};
  };
  const std::string padding(2100, 'p');
  for (TextCase& c : read_text_cases("try_harvest_cases.txt")) {
    const Web web = {
        {"http://www.a.e/in", response(c.texts["page"])},
        {"http://a.e/small12345", response("small")},
        {"http://a.e/page12345", RawResponse{"HTTP/1.1 404 Not Found\r\n\r\n<html>"}},
        {"http://a.e/html12345", response(padding + "<html>")},
        {"http://a.e/kept12345", response(padding)},
    };
    EXPECT_EQ(trace(web, {.image_tool = "tool", .image_tool_args = "x", .harvest = "1"}, 11),
              c.texts["report"]);
  }
}

TEST(TryHarvest, ReportsWhatKeepsARunFromTryingAtAll) {
  const std::string no_page =
      "Page: http://www.a.e/in\n"
      "  the fetch failed: the host is not known\n";
  EXPECT_EQ(trace({}, {.fetch_method = "9", .harvest = "1"}, 11),
            "Line 5 of the configuration is not a fetch method: nothing is fetched.\n");
  EXPECT_EQ(trace({}, {}, 3),
            "No run visits the first 11 trades. Record 4 is one of them. If a run visited it:\n"
            "Line 7 of the configuration switches the harvest off. If it were on:\n" +
                no_page + "End: no further link is in the page.\n");
  EXPECT_EQ(trace({}, {.harvest = "1\nan eighth"}, 11),
            no_page + "The configuration has more than 7 lines: a run stores nothing.\n");
  const RawResponse page{"<a href=/><img src=/12345></a>"};
  const RawResponse picture{std::string(2048, 'p')};
  EXPECT_TRUE(trace({{"http://www.a.e/in", page}, {"http://a.e/12345", picture}}, {.harvest = "1"},
                    11, "../a.e")
                  .ends_with("\n"
                             "  not stored: the trade's domain leads out of the thumbnail folder\n"
                             "End: 2048 bytes or more have come.\n"));
}

TEST(TryHarvest, FetchesAsARunDoesAndStoresNothing) {
  const HarvestedSite site;
  const auto before = site.contents();
  for (const char* trade : {"t12.example", "112"}) {
    EXPECT_EQ(site.run_ctl(std::string("try-harvest ") + trade), 0);
    EXPECT_NE(site.read("out").find("  3001 bytes by fetch\n  taken: a run stores 3001 bytes"),
              std::string::npos)
        << site.read("out");
    site.remove("out");
    EXPECT_EQ(site.contents(), before);
  }
  site.write("bin/fetch", "#!/bin/sh\n");
  EXPECT_EQ(site.run_ctl("try-harvest 112"), 1);
  EXPECT_NE(site.read("out").find("fetch returned nothing"), std::string::npos) << site.read("out");
}

TEST(TryHarvest, RootDoesNotWriteThroughALinkOfTheSitesOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become the site's owner";
  const HarvestedSite site;
  const TempDir roots;
  const std::string secret = roots.path() + "/file";
  std::ofstream(secret) << "root's";
  constexpr uid_t kOwner = 65534;
  for (const auto& entry : fs::recursive_directory_iterator(site.path(""))) {
    ASSERT_EQ(::chown(entry.path().c_str(), kOwner, kOwner), 0);
  }
  ASSERT_EQ(::chown(site.path("").c_str(), kOwner, kOwner), 0);
  ASSERT_EQ(::chmod(roots.path().c_str(), 0755), 0);
  fs::create_symlink(secret, site.path("l/sys/net/t12.example"));
  fs::create_symlink(secret, site.path("l/sys/net/t12.examplethumb"));
  EXPECT_NE(site.run_ctl("try-harvest 112"), 2) << site.read("out");
  std::string kept;
  std::getline(std::ifstream(secret), kept);
  EXPECT_EQ(kept, "root's");
}

}  // namespace
}  // namespace toplist::test
