#include "toplist/filters.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/rows.h"
#include "support/temp_dir.h"

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

TEST(Filters, MinimumsAreOffAtMinusOne) {
  const struct {
    Settings settings;
    std::int32_t rin60;
    bool shown;
  } cases[] = {
      {{}, INT32_MIN, true},
      {{{"t", "rin60", "0"}}, -1, false},
      {{{"t", "rin60", "-1"}}, -100, true},
      {{{"t", "rin60", "-2"}}, -2, true},
      {{{"t", "rin60", "-2"}}, -3, false},
      {{{"t", "rin60", "4294967295"}}, -100, true},  // the low 32 bits: -1
      {{{"t", "rin60", " 10abc"}}, 9, false},
      {{{"t", "rin60", " 10abc"}}, 10, true},
      {{{"t", "rin60", "abc"}}, -1, false},
      {{{"t", "rin60", "50"}, {"t", "rin60", "5"}}, 5, true},
      {{{"t", "rin60", "5"}, {"t", "rin60", "50"}}, 5, false},
      {{{"t", "rin60", "50"}, {"t", "rin60", "-1"}}, -5, true},
      {{{"t", "rin60", "5"}, {"t", "uin60", "1"}}, 5, false},  // all must hold
      {{{"u", "rin60", "50"}, {"d/tl/t", "rin60", "50"}, {"T", "rin60", "50"}}, 5, true},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    TradeRow row = make_row("1");
    row.periods[kPeriod60].rin = cases[i].rin60;
    EXPECT_EQ(filters_with(cases[i].settings).admit(row), cases[i].shown) << "case " << i;
  }
}

TEST(Filters, UnknownKeysAreIgnored) {
  for (const char* key : {"", "RIN60", "rin60 ", "\nrin60", "clk60", "rec24", "rin07", "rin99",
                          "clk24", "Domains", "groups", "cprod60"}) {
    EXPECT_TRUE(filters_with({{"t", key, "50000"}}).admit(make_row("1"))) << key;
  }
}

TEST(Filters, DomainListsAllowAndSkip) {
  // Of the domains abc.com, abd.com, ab, abc, "": which are shown.
  const struct {
    Settings settings;
    const char* shown;
  } cases[] = {
      {{{"t", "domains", "abc.com,abd.com,"}}, "11000"},
      {{{"t", "domains", " a b c . c o m ,,abc"}}, "10010"},
      {{{"t", "domains", "abc.com.xy"}}, "00000"},
      {{{"t", "domains", "abc"}}, "11111"},   // a value of 3 characters is ignored
      {{{"t", "domains", "abc,"}}, "00010"},  // one of 4 is not
      {{{"t", "domains", " a b ,xyz"}}, "00000"},
      {{{"t", "domains", ",,,,"}}, "11111"},
      {{{"t", "domains", "abc.com"}, {"t", "domains", "abd.com"}}, "11000"},
      {{{"t", "skipdomains", "abc.com\r\nabd.com\n"}}, "00111"},
      {{{"t", "skipdomains", "abc.com"}, {"t", "skipdomains", "abd.com,abc"}}, "00101"},
      {{{"t", "skipdomains", "abc"}}, "11111"},
      {{{"t", "domains", "abc.com,abd.com"}, {"t", "skipdomains", "abd.com"}}, "10000"},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    std::string shown;
    const ToplistFilters filters = filters_with(cases[i].settings);
    for (const char* domain : {"abc.com", "abd.com", "ab", "abc", ""}) {
      shown += filters.admit(make_row("1", domain)) ? '1' : '0';
    }
    EXPECT_EQ(shown, cases[i].shown) << "case " << i;
  }
}

TEST(Filters, GroupFilesListIdsFromTheSecondRecordOn) {
  const std::string header = "0|7|2|3|4|5|6|7|8|9|10|11|12|";
  const std::string rest = "|x|x|x|x|x|x|x|x|x|x|x|\n";
  const struct {
    std::string text, members;  // which of "7", "07", "8" and "9" are
  } cases[] = {
      {"", "0000"},
      {header, "0000"},
      {header + "\n|07" + rest + "|8" + rest, "0110"},
      {header + "0|8|2|\n3|4|5|6\n|7|8|9|10|11|12|0|9|", "0011"},  // counted across lines
      {header + "0|8", "0010"},
  };
  for (const auto& c : cases) {
    TextColumn column;
    parse_group(c.text, column);
    std::string members;
    for (const char* id : {"7", "07", "8", "9"}) members += column.contains(id) ? '1' : '0';
    EXPECT_EQ(members, c.members) << c.text;
    EXPECT_EQ(column.empty(), c.members == "0000") << c.text;
  }
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
