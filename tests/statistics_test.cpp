#include "run/statistics.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "support/rows.h"
#include "support/text_cases.h"

namespace toplist {
namespace {

using test::make_row;

/// What the rows x.com, y.com and x.com get: each value followed by a comma.
TEST(Statistics, AttachesExtraColumns) {
  test::expect_cases("attach_extra_columns", [](const std::string& text) {
    std::vector<TradeRow> rows = {make_row("1", "x.com"), make_row("2", "y.com"),
                                  make_row("3", "x.com")};
    attach_extra_columns(text, rows);
    std::string columns;
    for (const TradeRow& row : rows) {
      columns += ' ';
      for (const std::string_view column : row.extra_columns) columns.append(column) += ',';
      columns += ';';
    }
    return columns;
  });
}

/// rin uin out clk cef ctt ctg rec | percentages | further values
std::string describe(const PeriodBlock& b) {
  std::ostringstream text;
  text << b.rin << ' ' << b.uin << ' ' << b.out << ' ' << b.clk << ' ' << b.cef << ' ' << b.ctt
       << ' ' << b.ctg << ' ' << b.rec << " |";
  for (const std::int32_t percent : b.percent) text << ' ' << percent;
  text << " |";
  for (const std::int32_t further : b.further) text << ' ' << further;
  return text.str();
}

TEST(Statistics, AddsHistory) {
  test::expect_cases("add_history", [](const std::string& text) {
    PeriodBlock block;
    add_history(text, block);
    return describe(block);
  });
}

// Counters as the files order them (cef is the seventh), three ignored fields, three further ones.
constexpr const char* kSection60 = "100|200|50|30|20|7|90|3|9|9|9|61|62|63|";
constexpr const char* kSection24 = "1000|400|500|10|25|8|100|4|9|9|9|241|242|243|";
constexpr const char* kSection07 = "-10|20|0|5|6|7|8|9|9|9|9|71|72|";  // and the last field
constexpr const char* kZeros = "0 0 0 0 0 0 0 0 | 0 0 0 0 0 | 0 0 0";

std::string cut_record(const std::string& id) {
  return "0|" + id + '|' + kSection60 + kSection24 + kSection07;
}

TEST(Statistics, ReadsRecentPeriodsInFileOrder) {
  std::vector<TradeRow> rows = {make_row("7")};
  rows[0].periods[kPeriod99] = {4, 3, 8, 1, 2, 6, 7, 5, {}, {}};
  read_recent_periods(cut_record("7") + "73|", rows);
  EXPECT_EQ(describe(rows[0].periods[0]), "100 200 50 30 90 20 7 3 | 30 45 180 40 50 | 61 62 63");
  EXPECT_EQ(describe(rows[0].periods[1]),
            "1000 400 500 10 100 25 8 4 | 1 25 20 5 50 | 241 242 243");
  EXPECT_EQ(describe(rows[0].periods[2]), "-10 20 0 5 8 6 7 9 | -50 40 0 0 0 | 71 72 73");
  EXPECT_EQ(describe(rows[0].periods[3]), "4 3 8 1 2 6 7 5 | 25 66 25 75 200 | 0 0 0");

  read_recent_periods("0|7|" + std::string(kSection24) + kSection60 + kSection07 + "5|", rows);
  EXPECT_EQ(describe(rows[0].periods[1]), "100 200 50 30 90 20 7 3 | 30 45 180 40 50 | 61 62 63")
      << "values are assigned, not added";
}

TEST(Statistics, GivesASumRecordToTheFirstRowOfItsId) {
  const std::string full = cut_record("7") + "73|";
  const struct {
    std::string text;
    const char* taken;  // per row: "-" nothing, "c" counters only, "p" percentages too
  } cases[] = {
      {full, "-p-"},
      {cut_record("07") + "73|", "p--"},
      {cut_record(" 7") + "73|", "---"},
      {cut_record("8") + "73|\n" + full, "-p-"},  // skipped, with all its fields
      {full + "\n" + cut_record("07") + "73|\n", "pp-"},
      {cut_record("7") + "73", "-p-"},  // no separator at the end
      {cut_record("7"), "-c-"},         // the last field is missing
      {full + "0|07|5", "cp-"},
      {"", "---"},
  };
  for (const auto& c : cases) {
    std::vector<TradeRow> rows = {make_row("07"), make_row("7"), make_row("7")};
    read_recent_periods(c.text, rows);
    std::string taken;
    for (const TradeRow& row : rows) {
      const PeriodBlock& block = row.periods[kPeriod60];
      taken += block.percent[0] != 0 ? 'p' : block.rin != 0 ? 'c' : '-';
    }
    EXPECT_EQ(taken, c.taken) << c.text;
    EXPECT_EQ(describe(rows[2].periods[kPeriod60]), kZeros);
  }
}

TEST(Statistics, ACutSumRecordKeepsItsCountersWithoutPercentages) {
  std::vector<TradeRow> rows = {make_row("7")};
  rows[0].periods[kPeriod99].rin = rows[0].periods[kPeriod99].clk = 4;
  read_recent_periods(cut_record("7"), rows);
  EXPECT_EQ(describe(rows[0].periods[0]), "100 200 50 30 90 20 7 3 | 0 0 0 0 0 | 61 62 63");
  EXPECT_EQ(describe(rows[0].periods[2]), "-10 20 0 5 8 6 7 9 | 0 0 0 0 0 | 71 72 0");
  EXPECT_EQ(rows[0].periods[kPeriod99].percent[0], 0);
}

}  // namespace
}  // namespace toplist
