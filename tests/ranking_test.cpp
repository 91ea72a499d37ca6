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

/// What the order-by values stand for, the same for each of the four periods in turn.
constexpr std::string_view kFigures[] = {"rin",     "uin",     "out",      "clk",      "cef",
                                         "ctg",     "ctt",     "clk/rin",  "cef/uin",  "cef/out",
                                         "ctt/out", "out/rin", "further1", "further2", "further3"};
constexpr std::string_view kPeriods[] = {"60", "24", "07", "99"};

std::int32_t figure(TradeRow& row, std::string_view name, std::size_t period) {
  if (name.starts_with("further")) {
    return row.periods[period].further[static_cast<std::size_t>(name.back() - '1')];
  }
  const auto counter = [&](std::string_view counter_name) {
    return *test::find_counter(row, std::string(counter_name).append(kPeriods[period]));
  };
  const std::int32_t value = counter(name.substr(0, 3));
  if (name.size() == 3) return value;
  return percentage(value, counter(name.substr(4)));
}

/// A row in which all figures differ, as do the ratios; the stored percentages are nonsense.
TradeRow random_row(std::mt19937& random, std::string id) {
  TradeRow row = make_row(std::move(id));
  for (PeriodBlock& block : row.periods) {
    for (const Counter counter :
         {&PeriodBlock::rin, &PeriodBlock::uin, &PeriodBlock::out, &PeriodBlock::clk,
          &PeriodBlock::cef, &PeriodBlock::ctt, &PeriodBlock::ctg, &PeriodBlock::rec}) {
      block.*counter = static_cast<std::int32_t>(random() % 2000000) - 500000;
    }
    for (std::int32_t& further : block.further) further = static_cast<std::int32_t>(random());
    for (std::int32_t& percent : block.percent) percent = static_cast<std::int32_t>(random());
  }
  return row;
}

TEST(Ranking, EachOrderByValueNamesItsFigure) {
  std::mt19937 random(2);
  for (int round = 0; round < 20; ++round) {
    TradeRow a = random_row(random, "a");
    TradeRow b = random_row(random, "b");
    b.order_key = "nonsense";  // only that of the first row counts
    for (std::size_t i = 0; i < 60; ++i) {
      a.order_key = std::to_string(i + 1);
      const std::int32_t of_a = figure(a, kFigures[i % 15], i / 15);
      const std::int32_t of_b = figure(b, kFigures[i % 15], i / 15);
      ASSERT_EQ(rowBefore(a, b), i + 1 == 57 ? of_a < of_b : of_a > of_b) << a.order_key;
      ASSERT_FALSE(rowBefore(a, a)) << a.order_key;
    }
  }
}

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
    made.periods[kPeriod60].clk = made.periods[kPeriod99].out = numerator;
    made.periods[kPeriod60].rin = made.periods[kPeriod99].rin = denominator;
    return made;
  };
  const std::vector<TradeRow> rows = {row("a", 10, 100),   row("b", 5, 0),      row("c", 50, 100),
                                      row("d", 333, 1000), row("e", 339, 1000), row("f", -1, 10)};
  EXPECT_EQ(order("8", rows), "cdeabf");  // 33.3 and 33.9 are equal
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
