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

namespace toplist {
namespace {

TEST(Link, HostOfAnAddress) {
  const struct {
    const char *url, *host;
  } cases[] = {
      {"http://www.Host.Example/a/b?c", "Host.Example"},
      {"https://http://www.h.example/", "h.example"},
      {"http://https://h.example/", "https:"},  // in this order only
      {"www.http://h.example/", "http:"},
      {"http://www.www.h.example", "www.h.example"},
      {"HTTP://h.example", "HTTP:"},
      {"h.example:8080/x", "h.example:8080"},
      {"h.example/a?b", "h.example"},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(host_of_url(c.url), c.host) << c.url;
}

constexpr const char* kHost = "h.example";

const struct {
  const char *chunk, *picture;
} kPicks[] = {
    // The shape of a link.
    {"<p>text<a class=b href=/x c=d>more<img alt=e src=p.jpg width=1></a>",
     "http://h.example/p.jpg"},
    {"<a href=/x><img src=http://far.example/p.jpg></a>", "http://far.example/p.jpg"},
    {"<a href=/x><img src=/p></a><a href=/y><img src=/q></a>", "http://h.example/p"},
    {"<a href=/x>no picture</a><a href=/y><img src=/q></a>", ""},  // only the first link counts
    // Missing pieces.
    {"<a href=/x><img src=/p.jpg>", ""},
    {"<a href=/x><img alt=x></a>", ""},
    {"<a src=/p.jpg href=/x><img alt=x></a>", ""},  // the picture's "src=" is behind the "<img "
    // Only the space and ">" end a value.
    {"<a href=/x><img src=/p.jpg\nalt=x></a>", "http://h.example/p.jpg\nalt=x"},
    // Quotes go, with the character behind each one passed over.
    {"<a href=/x><img src=\"\"\"/p.jpg></a>", "http://h.example/\"/p.jpg"},
    {"<a href=/x><img src=/a\"$(x)\";b></a>", "http://h.example/a$(x);b"},
    // One blank behind the equals sign goes.
    {"<a href=/x><img src=  /p.jpg></a>", "http://h.example/"},
    {"<a href= http://far.example/><img src=p></a>", ""},
    {"<a href=/x><img src=\" /p.jpg\"></a>", "http://h.example/p.jpg"},  // quotes go first
    // Whose link it is.
    {"<a href=http://www.h.example/x><img src=p></a>", "http://h.example/p"},
    {"<a href=http://h.example.far.example/><img src=p></a>", "http://h.example/p"},
    {"<a href=HTTP://H.EXAMPLE><img src=p></a>", "http://h.example/p"},
    {"<a href=http://sub.h.example/><img src=p></a>", ""},
    {"<a href=/x onclick=javascript:open()><img src=p></a>", "http://h.example/p"},
};

TEST(Link, PicksThePictureOfTheFirstLink) {
  for (const auto& c : kPicks) {
    const ThumbnailLink link = pick_thumbnail_link(c.chunk, kHost);
    EXPECT_EQ(link.picture, c.picture) << c.chunk;
    EXPECT_EQ(link.refusal.empty(), !link.picture.empty()) << c.chunk;
  }
}

TEST(Link, TheHostKeepsItsCaseAgainstTheLowerCasedPage) {
  EXPECT_EQ(pick_thumbnail_link("<a href=http://H.Example/><img src=p></a>", "H.Example").picture,
            "");
  EXPECT_EQ(pick_thumbnail_link("<a href=/x><img src=/P></a>", "H.Example").picture,
            "http://H.Example/p");
}

struct CandidateCase {
  const char* address;
  bool taken;
};

TEST(Candidate, IsLongEnoughNumberedAndNoOrnament) {
  constexpr CandidateCase kCases[] = {
      {"http://h.e/12345", true},
      {"http://h.e/1234", false},
      {"http://1/2345a", true},
      {"http://a1b2c3d4e5/", true},
      {"12345678901", true},
      {"1234567890", false},
      {"http://h.e/12345/home.jpg", false},
      {"http://h.e/12345book", false},
      {"http://logohost/12345", false},
      {"http://h.e/l-ogo12345", true},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(candidate_fault(c.address).empty(), c.taken) << c.address;
  }
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
  const struct {
    const char *response, *body;
  } cases[] = {
      {"HTTP/1.0 200 OK\r\nA: b\r\n\r\nbody\r\n\r\nmore", "body\r\n\r\nmore"},
      {"HTTP/1.0 200 OK\n\nbody", "HTTP/1.0 200 OK\n\nbody"},
      {"\r\n\r\n", ""},
  };
  for (const auto& c : cases) {
    std::string response = c.response;
    remove_response_head(response);
    EXPECT_EQ(response, c.body);
  }
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
