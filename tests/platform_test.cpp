// The program built for another processor beside the one built for this machine: the same bytes
// from the same site.

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/site.h"
#include "util/text.h"

namespace toplist::test {
namespace {

constexpr std::int32_t kTrades = 40;
constexpr int kOrderValues = 61;  // one more than there are

/// Few figures, so that trades tie and ratios are whole; the limits are among them.
constexpr std::int32_t kFigures[] = {0,  1,   2,   3,   50,       53,        59,       100,
                                     -1, -53, 106, 200, 21474837, INT32_MAX, INT32_MIN};

/// Figures as no counter writes them. Bytes from \200 on are negative where char is signed.
constexpr const char* kOddFigures[] = {
    "99999999999999999999", "-99999999999999999999", "2147483648", "\2407", "+0053", "-", ""};

constexpr const char* kTexts[] = {"caf\303\251", "\377\200", "z", "", "%", "<b>"};

/// The tags of a rank, each with a text or a byte behind it.
constexpr const char* kTags[] = {"%%tid_0@%%\351", "%%dom_0@%%:",   "%%lnk_0@%% ",
                                 "%%tit_0@%%|",    "%%des_0@%%|",   "%%img_0@%%|",
                                 "%%att00_0@%%|",  "%%rin60_0@%%|", "%%uin24_0@%%|",
                                 "%%ctg07_0@%%|",  "%%out99_0@%%|", "%%\377\200\351_0@%%|"};

constexpr const char* kSettings[] = {
    "cprod=53",         "tprod=-2",        "rin24=-5",
    "uin60=9999999999", "group=\377 fine", "skipdomains=d\3773.example, d\3774.example"};

/// Draws the same from the same seed.
class Draw {
 public:
  explicit Draw(unsigned seed) : random_(seed) {}

  std::size_t below(std::size_t limit) { return random_() % limit; }

  template <typename Table>
  auto from(const Table& table) {
    return table[below(std::size(table))];
  }

  template <typename Table>
  std::string several(std::size_t count, const Table& table, const std::string& separator) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += from(table) + separator;
    return text;
  }

 private:
  std::mt19937 random_;
};

Trade draw_trade(std::int32_t id, Draw& draw) {
  Trade trade{.id = id, .domain = "d\377" + std::to_string(id) + ".example"};
  for (PeriodBlock& block : trade.periods) {
    for (const Counter counter : kFileOrder) block.*counter = draw.from(kFigures);
    for (std::int32_t& further : block.further) further = draw.from(kFigures);
  }
  for (std::string& column : trade.columns) column = draw.several(draw.below(12), kTexts, ";");
  return trade;
}

std::vector<Trade> draw_trades(Draw& draw) {
  std::vector<Trade> trades;
  trades.reserve(kTrades);
  for (std::int32_t id = 0; id < kTrades; ++id) trades.push_back(draw_trade(id, draw));
  return trades;
}

std::string draw_template(Draw& draw) {
  std::string text;
  for (int rank = 0; rank <= kTrades; ++rank) {
    std::string line = draw.several(8, kTags, "");
    replace_all(line, "@", std::to_string(100 + rank).substr(1));
    text += line + "\n";
  }
  return text;
}

/// A site with ties, ratios, alternatives, odd figures and settings, and a toplist for each
/// order-by value.
class DrawnSite : public Site {
 public:
  explicit DrawnSite(Draw draw) : Site(draw_trades(draw)) {
    for (std::int32_t id = 0; id < kTrades; id += 4) {
      const std::string number = std::to_string(id);
      write("d/t/sum",
            read("d/t/sum") + "sum|" + number + "|" + draw.several(42, kOddFigures, "|"));
      write("d/h/d\377" + number + ".example.his", draw.several(100, kOddFigures, "|"));
    }
    remove("d/h/d\3777.example.his");
    write("d/gr/\377fine", site::encode_group("fine", std::vector<std::int32_t>{1, 3, 5, 7, 39}));
    for (int value = 1; value <= kOrderValues; ++value) {
      const std::string name = "list" + std::to_string(value);
      add_toplist(name, draw_template(draw), std::to_string(value));
      if (value % 2 == 0) add_setting(name, draw.from(kSettings));
    }
  }
};

using Clock = std::chrono::system_clock;

/// Runs each program in its site, both within the second that decides which alternatives are
/// picked.
void run_both(const Site& native, const Site& emulated) {
  constexpr int kMostTries = 30;
  for (int tries = 0; tries < kMostTries; ++tries) {
    // From its beginning, as a busy machine takes most of it; time() may be a tick behind.
    std::this_thread::sleep_until(std::chrono::ceil<std::chrono::seconds>(Clock::now()) +
                                  std::chrono::milliseconds(20));
    const std::time_t second = std::time(nullptr);
    ASSERT_EQ(native.start({.program = TOPLIST_NATIVE_PROGRAM}), RunResult{});
    ASSERT_EQ(emulated.run(), RunResult{});
    if (std::time(nullptr) == second) return;
  }
  FAIL() << "the two runs never fell within one second";
}

TEST(Platform, BuildsTheSamePagesAsTheOther) {
  for (unsigned seed = 1; seed <= 5; ++seed) {
    SCOPED_TRACE(seed);
    const DrawnSite native{Draw(seed)}, emulated{Draw(seed)};
    ASSERT_NO_FATAL_FAILURE(run_both(native, emulated));
    EXPECT_EQ(emulated.log(), native.log());
    const auto files = native.contents(), others = emulated.contents();
    ASSERT_EQ(others.size(), files.size());
    for (const auto& [name, bytes] : files) EXPECT_EQ(others.at(name), bytes) << name;
  }
}

}  // namespace
}  // namespace toplist::test
