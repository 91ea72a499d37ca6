#include "toplist/ranking.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/rows.h"

namespace toplist {
namespace {

using test::make_row;

TEST(Ranking, AnyOtherOrderByValueRanksByRin24) {
  TradeRow less = make_row("less");
  TradeRow more = make_row("more");
  more.periods[kPeriod24].rin = 1;
  for (PeriodBlock& block : less.periods) {
    block.rin += block.uin = block.out = block.clk = block.cef = block.ctg = block.ctt = 9;
  }
  for (const char* key :
       {"", "0", "05", " 5", "5 ", "+5", "5\n", "61", "057", "100", "-1", "5x", "\x31\x80"}) {
    less.periods[kPeriod24].rin = 0;
    less.order_key = more.order_key = key;
    EXPECT_TRUE(rowBefore(more, less)) << '"' << key << '"';
    EXPECT_FALSE(rowBefore(less, more)) << '"' << key << '"';
  }
}

TEST(Ranking, RatiosAreTruncatedAndZeroDenominatorsGiveZero) {
  const auto order = [](std::string_view key, std::vector<TradeRow> rows) {
    auto pointers = test::pointers_to<TradeRow>(rows);
    rank_rows(rows, std::string(key), pointers);
    std::string ids;
    for (const TradeRow* row : pointers) {
      EXPECT_EQ(row->order_key, key);
      ids += row->id;
    }
    return ids;
  };
  const auto row = [](const char* id, std::int32_t numerator, std::int32_t denominator) {
    TradeRow made = make_row(id);
    PeriodBlock& last60 = made.periods[kPeriod60];
    last60.clk = last60.cef = last60.ctt = made.periods[kPeriod99].out = numerator;
    last60.rin = last60.uin = last60.out = made.periods[kPeriod99].rin = denominator;
    return made;
  };
  const std::vector<TradeRow> rows = {row("a", 10, 100),   row("b", 5, 0),      row("c", 50, 100),
                                      row("d", 333, 1000), row("e", 339, 1000), row("f", -1, 10)};
  // 33.3 and 33.9 are equal.
  for (const char* key : {"8", "9", "10", "11"}) EXPECT_EQ(order(key, rows), "cdeabf") << key;
  EXPECT_EQ(order("57", rows), "fbadec");
}

// Equal keys come out as std::sort leaves whole rows, each ranking starting from the last one.
TEST(Ranking, IsThePermutationOfStdSort) {
  std::mt19937 random(3);
  for (const std::size_t count : {0U, 1U, 2U, 16U, 17U, 33U, 60U, 500U, 3000U}) {
    std::vector<TradeRow> rows;
    for (std::size_t i = 0; i < count; ++i) {
      TradeRow row = make_row(std::to_string(i));
      for (PeriodBlock& block : row.periods) {
        block.rin = static_cast<std::int32_t>(random() % 4);
        block.out = static_cast<std::int32_t>(random() % 3);
      }
      rows.push_back(std::move(row));
    }
    std::vector<TradeRow> sorted = rows;
    auto ranked = test::pointers_to<TradeRow>(rows);
    for (const char* key : {"1", "57", "57", "2", "12", "abc", "3"}) {
      for (TradeRow& row : sorted) row.order_key = key;
      std::sort(sorted.begin(), sorted.end(), rowBefore);
      rank_rows(rows, key, ranked);
      ASSERT_TRUE(std::equal(sorted.begin(), sorted.end(), ranked.begin(), ranked.end(),
                             [](const TradeRow& a, const TradeRow* b) { return a.id == b->id; }))
          << count << " rows by " << key;
    }
  }
}

}  // namespace
}  // namespace toplist
