#include "toplist/filters.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/rows.h"
#include "support/temp_dir.h"
#include "support/text_cases.h"

namespace toplist {
namespace {

using test::make_row;
using test::TempDir;

using Settings = std::vector<ToplistSetting>;

ToplistFilters filters_with(const Settings& settings) { return filters_of("d/tl/t", settings); }

/// Whether the row passes a minimum of 5, and none of 6.
bool has_five(const TradeRow& row, std::string_view key) {
  return filters_with({{"t", key, "5"}}).admit(row) && !filters_with({{"t", key, "6"}}).admit(row);
}

TEST(Filters, EachMinimumTestsItsOwnFigure) {
  for (const std::string_view key : {"rin60", "uin60", "out60", "cef60", "ctt60", "ctg60", "rin24",
                                     "uin24", "out24", "cef24", "ctt24", "ctg24"}) {
    TradeRow row = make_row("1");
    *test::find_counter(row, key) = 5;
    EXPECT_TRUE(has_five(row, key)) << key;
  }
  for (const auto& [key, percent] : {std::pair{"cprod", 0U}, std::pair{"tprod", 3U}}) {
    TradeRow row = make_row("1");
    // The stored percentage counts, not what the counters would give.
    row.periods[kPeriod24].rin = row.periods[kPeriod24].clk = 1;
    row.periods[kPeriod24].out = row.periods[kPeriod24].ctt = 1;
    row.periods[kPeriod24].percent[percent] = 5;
    EXPECT_TRUE(has_five(row, key)) << key;
  }
}

/// A row's rin60, and the settings.
TEST(Filters, MinimumsAreOffAtMinusOne) {
  test::expect_cases("minimums", [](const std::string& text) {
    TradeRow row = make_row("1");
    row.periods[kPeriod60].rin = std::stoi(text);
    const std::string settings = text.substr(text.find(' ') + 1);
    return filters_with(parse_settings(settings)).admit(row) ? "shown" : "";
  });
}

TEST(Filters, UnknownKeysAreIgnored) {
  for (const char* key : {"", "RIN60", "rin60 ", "\nrin60", "clk60", "rec24", "rin07", "rin99",
                          "clk24", "Domains", "groups", "cprod60"}) {
    EXPECT_TRUE(filters_with({{"t", key, "50000"}}).admit(make_row("1"))) << key;
  }
}

/// Which of five domains are shown.
TEST(Filters, DomainListsAllowAndSkip) {
  test::expect_cases("domain lists", [](const std::string& settings) {
    std::string shown;
    const ToplistFilters filters = filters_with(parse_settings(settings));
    for (const char* domain : {"abc.com", "abd.com", "ab", "abc", ""}) {
      shown += filters.admit(make_row("1", domain)) ? '1' : '0';
    }
    return shown;
  });
}

/// Which of "7", "07", "8" and "9" are members.
TEST(Filters, GroupFilesListIdsFromTheSecondRecordOn) {
  test::expect_cases("parse_group", [](const std::string& text) {
    TextColumn column;
    parse_group(text, column);
    std::string members;
    for (const char* id : {"7", "07", "8", "9"}) members += column.contains(id) ? '1' : '0';
    EXPECT_EQ(column.empty(), members == "0000") << text;
    return members;
  });
}

TEST(Filters, AGroupWithoutANameRestrictsNothing) {
  for (const char* name : {"*", ""}) EXPECT_EQ(group_path(name), std::nullopt) << name;
  for (const char* name : {" ", "\r\n "}) EXPECT_EQ(group_path(name), "d/gr/") << name;
  const std::vector<std::string> unopened{"d/gr/"};
  const auto filters = filters_with({{"t", "group", "*"}, {"t", "group", " "}});
  EXPECT_EQ(filters.unopened_groups(), unopened);
  EXPECT_TRUE(filters.admit(make_row("1")));
}

TEST(Filters, RowsWithoutThumbnailAreSkippedEvenWhenAllowed) {
  const TempDir dir;
  for (const char* name : {"a.com.jpg", "b.com.JPG", "c.com"}) (void)dir.write(name, "");
  std::vector<TradeRow> rows;
  for (const char* domain : {"a.com", "b.com", "c.com", "A.com", "a.co"}) {
    rows.push_back(make_row("1", domain));
  }
  rows[0].mark = 1;
  ASSERT_TRUE(mark_rows_without_thumbnail(dir.path(), rows));
  std::string shown;
  const ToplistFilters filters = filters_with({{"t", "domains", "a.com,b.com"}});
  for (const TradeRow& row : rows) {
    shown += ToplistFilters{}.admit(row) ? '1' : '0';
    shown += filters.admit(row) ? '1' : '0';
  }
  EXPECT_EQ(shown, "1100000000");
  EXPECT_FALSE(mark_rows_without_thumbnail(dir.path() + "/missing", rows));
}

}  // namespace
}  // namespace toplist
