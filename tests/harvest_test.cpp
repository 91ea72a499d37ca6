#include "harvest/harvest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "harvest/harvest_config.h"
#include "harvest/harvest_worker.h"
#include "harvest/link.h"
#include "harvest/picture_search.h"
#include "harvest/trade_harvest.h"
#include "support/text_cases.h"

namespace toplist {
namespace {

TEST(Link, HostOfAnAddress) { test::expect_cases("host_of_url", host_of_url); }

constexpr const char* kHost = "h.example";

TEST(Link, PicksThePictureOfTheFirstLink) {
  test::expect_cases("pick_thumbnail_link", [](const std::string& chunk) {
    const ThumbnailLink link = pick_thumbnail_link(chunk, kHost);
    EXPECT_EQ(link.refusal.empty(), !link.picture.empty()) << chunk;
    return link.picture;
  });
}

TEST(Link, TheHostKeepsItsCaseAgainstTheLowerCasedPage) {
  EXPECT_EQ(pick_thumbnail_link("<a href=http://H.Example/><img src=p></a>", "H.Example").picture,
            "");
  EXPECT_EQ(pick_thumbnail_link("<a href=/x><img src=/P></a>", "H.Example").picture,
            "http://H.Example/p");
}

TEST(Candidate, IsLongEnoughNumberedAndNoOrnament) {
  test::expect_cases("candidate_fault", [](const std::string& address) {
    return candidate_fault(address).empty() ? "" : "refused";
  });
}

TEST(Picture, IsLargeEnoughAndNoPage) {
  const auto sized = [](std::string text, std::size_t size) {
    text.resize(size, 'x');
    return text;
  };
  const std::string padding(2048, 'x');
  EXPECT_NE(picture_fault(""), "");
  EXPECT_NE(picture_fault("-1"), "");
  EXPECT_NE(picture_fault(sized("HTTP/1.0 200 OK\r\n\r\n", 2047)), "");
  EXPECT_EQ(picture_fault(sized("HTTP/1.0 200 OK\r\n\r\n", 2048)), "");
  EXPECT_NE(picture_fault(padding + "<html>"), "");
  EXPECT_NE(picture_fault("<body" + padding), "");
  EXPECT_EQ(picture_fault(padding + "<HTML><BODY><html lang=x>< body"), "");
}

/// A search over a page: what it asked for, and what it stored.
struct Search {
  std::vector<std::string> fetched, stored;
};

using Web = std::map<std::string, std::string>;  // picture path -> response; others give "-1"

std::string link_to(const std::string& path) { return "<a href=/><img src=" + path + "></a>\n"; }

Search search(const std::vector<std::string>& paths, const Web& web, bool cut_heads = false) {
  std::string page;
  for (const std::string& path : paths) page += link_to(path);
  Search result;
  const auto fetch = [&](const std::string& address, std::string& image) {
    const std::string path = address.substr(address.find(kHost) + std::strlen(kHost));
    result.fetched.push_back(path);
    image = web.contains(path) ? web.at(path) : "-1";
  };
  const auto store = [&](std::string& image) {
    if (cut_heads) remove_response_head(image);
    result.stored.push_back(image);
  };
  search_picture(page, kHost, {.fetch = fetch, .store = store});
  return result;
}

const std::string kPicture(2048, 'p');
const std::string kSmallPicture(2047, 's');

using Paths = std::vector<std::string>;

TEST(PictureSearch, TriesTheLinksInTurnUntilAPictureComes) {
  const std::string html = "<html>";
  const struct {
    std::string first, second;  ///< what the two links of a page give
    std::size_t fetches;
    bool stored;  ///< the last one fetched
  } cases[] = {
      {kPicture, kPicture, 1, true},
      {"-1", kPicture, 2, true},
      {kSmallPicture, kPicture, 2, true},
      {kSmallPicture, kSmallPicture, 2, false},
      {html, kPicture, 2, true},
      {html + kPicture, kPicture, 1, false},  // a large page ends it
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.first.substr(0, 10) + " " + c.second.substr(0, 10));
    const Search result = search({"/11111", "/22222"}, {{"/11111", c.first}, {"/22222", c.second}});
    EXPECT_EQ(result.fetched, c.fetches == 1 ? Paths{"/11111"} : (Paths{"/11111", "/22222"}));
    EXPECT_EQ(result.stored, c.stored ? Paths{kPicture} : Paths{});
  }
  EXPECT_EQ(search({}, {}).fetched, Paths{});
}

TEST(PictureSearch, TriesTenLinksAtMost) {
  Paths links;
  for (int i = 10; i < 21; ++i) links.push_back("/000" + std::to_string(i));
  const Paths ten(links.begin(), links.begin() + 10);
  const Web web{{ten.back(), kPicture}, {links.back(), kPicture}};
  EXPECT_EQ(search(links, {}).fetched, ten);
  EXPECT_EQ(search(links, web).stored, Paths{kPicture});
  EXPECT_EQ(search(links, {{links.back(), kPicture}}).stored, Paths{});
  // A rejected candidate uses up a pass too.
  links[3] = "/home12345";
  EXPECT_EQ(search(links, {{links.back(), kPicture}}).fetched.size(), 9U);
}

TEST(PictureSearch, GoesOnAfterAPictureThatIsSmallWithoutItsHead) {
  const std::string first = "HTTP/1.0 200 OK\r\n\r\n" + std::string(2040, 'f') + "\r\n\r\n";
  const Search result =
      search({"/11111", "/22222"}, {{"/11111", first}, {"/22222", kPicture}}, true);
  EXPECT_EQ(result.fetched, (Paths{"/11111", "/22222"}));
  EXPECT_EQ(result.stored, (Paths{std::string(2040, 'f') + "\r\n\r\n", kPicture}));
}

TEST(PictureSearch, TheHeadEndsWithTheFirstEmptyLine) {
  test::expect_cases("remove_response_head", [](std::string response) {
    remove_response_head(response);
    return response;
  });
}

TEST(ImageTool, TheCommandIsByteForByteTheDocumentedOne) {
  const auto config = parse_harvest_config("t_\ntool $A 'b c' &&\n;x | y >z\n", "");
  EXPECT_EQ(image_tool_command(config, "h.example:8080", "my-domain.example"),
            "tool $A 'b c' && t_h.example:8080.jpg ;x | y >z t_my-domain.example.jpg");
}

/// What the threads of one harvest report.
struct Roll {
  std::mutex mutex;
  std::condition_variable changed;
  std::size_t trades = 0;  ///< in the whole database
  std::vector<const TradeRecord*> visited;
  std::size_t ended = 0;
  bool group_met = true;     ///< every thread saw all others of its group start
  bool barrier_held = true;  ///< no thread started before the groups in front of its own had ended
};

Roll* roll = nullptr;  // a thread function has no other way to it

/// A stand-in for the worker that stays until its whole group is there. The trades' ids are their
/// indices.
void* report(void* argument) {
  const TradeRecord* const trade = static_cast<HarvestVisit*>(argument)->trade;
  const std::size_t place = static_cast<std::size_t>(trade->trade_id) - 11;
  const std::size_t group_start = place / 8 * 8;
  const std::size_t group_end = std::min(group_start + 8, roll->trades - 11);
  std::unique_lock lock(roll->mutex);
  roll->visited.push_back(trade);
  if (roll->ended != group_start) roll->barrier_held = false;
  roll->changed.notify_all();
  const auto met = [group_end] { return roll->visited.size() >= group_end; };
  if (!roll->changed.wait_for(lock, std::chrono::seconds(10), met)) roll->group_met = false;
  lock.unlock();
  std::this_thread::sleep_for(std::chrono::milliseconds(2 * (place % 8)));  // they end one by one
  lock.lock();
  roll->ended += 1;
  return nullptr;
}

TEST(HarvestThreads, VisitEveryTradeFromIndexElevenOnInGroupsOfEight) {
  for (const std::size_t count : {0U, 10U, 11U, 12U, 19U, 20U, 28U}) {
    SCOPED_TRACE(count);
    Roll here;
    roll = &here;
    here.trades = count;
    std::vector<TradeRecord> trades(count);
    for (std::size_t i = 0; i < count; ++i) {
      trades[i].trade_id = static_cast<std::int32_t>(i);
      trades[i].status = static_cast<std::int32_t>(i % 3);  // of no influence
    }
    harvest_thumbnails(trades, report);

    std::vector<const TradeRecord*> expected;
    for (std::size_t i = 11; i < count; ++i) expected.push_back(&trades[i]);
    std::sort(here.visited.begin(), here.visited.end());
    EXPECT_EQ(here.visited, expected);
    EXPECT_EQ(here.ended, expected.size());
    EXPECT_TRUE(here.group_met);
    EXPECT_TRUE(here.barrier_held);
  }
}

}  // namespace
}  // namespace toplist
