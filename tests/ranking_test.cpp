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

/// What the order-by values "1" to "60" stand for, one after another; "further2.07" is the second
/// further value of period 07.
constexpr std::string_view kFigures[] = {
    "rin60",       "uin60",       "out60",       "clk60",       "cef60",       "ctg60",
    "ctt60",       "clk60/rin60", "cef60/uin60", "cef60/out60", "ctt60/out60", "out60/rin60",
    "further1.60", "further2.60", "further3.60", "rin24",       "uin24",       "out24",
    "clk24",       "cef24",       "ctg24",       "ctt24",       "clk24/rin24", "cef24/uin24",
    "cef24/out24", "ctt24/out24", "out24/rin24", "further1.24", "further2.24", "further3.24",
    "rin07",       "uin07",       "out07",       "clk07",       "cef07",       "ctg07",
    "ctt07",       "clk07/rin07", "cef07/uin07", "cef07/out07", "ctt07/out07", "out07/rin07",
    "further1.07", "further2.07", "further3.07", "rin99",       "uin99",       "out99",
    "clk99",       "cef99",       "ctg99",       "ctt99",       "clk99/rin99", "cef99/uin99",
    "cef99/out99", "ctt99/out99", "out99/rin99", "further1.99", "further2.99", "further3.99",
};
static_assert(std::size(kFigures) == 60);

std::int32_t figure(TradeRow& row, std::string_view name) {
  if (name.starts_with("further")) {
    const std::string_view periods[] = {"60", "24", "07", "99"};
    const auto period = std::find(std::begin(periods), std::end(periods), name.substr(9));
    return row.periods[static_cast<std::size_t>(period - periods)]
        .further[static_cast<std::size_t>(name[7] - '1')];
  }
  const std::int32_t value = *test::find_counter(row, name.substr(0, 5));
  if (name.size() == 5) return value;
  const std::int32_t denominator = *test::find_counter(row, name.substr(6));
  return denominator == 0
             ? 0
             : static_cast<std::int32_t>(static_cast<long double>(value) / denominator * 100);
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
      const std::int32_t of_a = figure(a, kFigures[i]);
      const std::int32_t of_b = figure(b, kFigures[i]);
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
  for (const char* key : {"", "0", "00", "05", " 5", "5 ", "+5", "1 ", "5\n", "61", "99", "057",
                          "100", "-1", "abc", "5x", "57.", "\x31\x80"}) {
    less.periods[kPeriod24].rin = 0;
    less.order_key = more.order_key = key;
    EXPECT_TRUE(rowBefore(more, less)) << '"' << key << '"';
    EXPECT_FALSE(rowBefore(less, more)) << '"' << key << '"';
  }
}

TEST(Ranking, RatiosAreTruncatedAndZeroDenominatorsGiveZero) {
  const auto order = [](std::string_view key, std::vector<TradeRow> rows) {
    auto pointers = test::pointers_to<TradeRow>(rows);
    rank_rows(pointers, std::string(key));
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
      rank_rows(ranked, key);
      ASSERT_TRUE(std::equal(sorted.begin(), sorted.end(), ranked.begin(), ranked.end(),
                             [](const TradeRow& a, const TradeRow* b) { return a.id == b->id; }))
          << count << " rows by " << key;
    }
  }
}

}  // namespace
}  // namespace toplist
