#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "support/temp_dir.h"
#include "toplist/alternatives.h"
#include "toplist/definitions.h"

namespace toplist {
namespace {

using test::TempDir;

constexpr const char* kEmptyDigest = "da39a3ee5e6b4b0d3255bfef95601890afd80709";

TEST(Definitions, TakeNineFieldsEach) {
  const std::string one = "0|a.html|2|out/a.html|5|1|c0ffee|7|8|";
  const std::string two = "\n|b|2|b.htm|99|2||7|8|";
  const std::string a = "d/tl/a.html>out/a.html,5,1,c0ffee;";
  const std::string b = "d/tl/b>b.htm,99,2,;";
  const struct {
    std::string text, definitions;
  } cases[] = {
      {"", ""},
      {"0|a", ""},
      {one + two + "\n", a + b},  // the 19th field alone adds nothing
      {one + two + "0|c", ""},    // a template without an output path: nothing is built
      {one + two + "0|c|2|", ""},
      {one + two + "0|c|2|c.html", a + b + "d/tl/c>c.html,,,;"},
      {one + "0|c|2|c.html|61|", a + "d/tl/c>c.html,61,,;"},
      {"0|a.html\n|2| out |\n5|1 |c0\r\nffee|", "d/tl/a.html\n> out ,\n5,1 ,c0\r\nffee;"},
  };
  for (const auto& c : cases) {
    std::string definitions;
    for (const ToplistDefinition& d : parse_definitions(c.text)) {
      definitions += d.template_path + '>' + d.output_path + ',' + d.order_by + ',' + d.build_mode +
                     ',' + d.check_value + ';';
    }
    EXPECT_EQ(definitions, c.definitions) << c.text;
  }
}

TEST(Definitions, SettingsTakeThreeFieldsEach) {
  const struct {
    const char *text, *settings;
  } cases[] = {
      {"", ""},
      {"0|a|rin60=5|\n|b|domains=x.com\ny.com|\n", "a:rin60>5;b:domains>x.com\ny.com;"},
      {"0|a|k=v=w|0|a|=|0|a|k=", "a:k>v=w;a:>;a:k>;"},
      {"0|a|no value|0|b|k=v|", "b:k>v;"},  // dropped, and the count goes on
      {"0|a|k=v|0|b|", "a:k>v;"},           // cut short
  };
  for (const auto& c : cases) {
    std::string settings;
    for (const ToplistSetting& s : parse_settings(c.text)) {
      settings.append(s.template_name).append(":").append(s.key).append(">").append(s.value) += ';';
    }
    EXPECT_EQ(settings, c.settings) << c.text;
  }
}

TEST(Definitions, BuildModeAndCheckValueDecideWhatIsBuilt) {
  const TempDir dir;
  const std::string page = dir.write("page", "abc");
  const std::string missing = dir.path() + "/missing";
  const std::string digest = "a9993e364706816aba3e25717850c26c9cd0d89d";
  const struct {
    std::string path, mode, check;
    bool built;
  } cases[] = {
      {page, "1", digest, true},
      {page, "1", "A9993E364706816ABA3E25717850C26C9CD0D89D", false},
      {page, "1", digest.substr(0, 39), false},
      {page, "1", digest + " ", false},
      {page, "2", "", true},
      {page, "", digest, false},
      {page, "3", digest, false},
      {page, "01", digest, false},
      {page, "2\r", digest, false},
      {missing, "1", digest, false},
      {missing, "1", kEmptyDigest, true},  // a missing template hashes as an empty one
      {missing, "2", "", true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(may_be_built({c.path, "out", "1", c.mode, c.check}), c.built)
        << c.mode << ' ' << c.check;
  }
}

TEST(Alternatives, AllPicksOfASecondTakeOnePosition) {
  const struct {
    const char* column;
    std::vector<std::string_view> pieces;
  } cases[] = {
      {"", {""}},
      {";", {""}},
      {"x;", {"x"}},
      {"a;b;", {"a", "b"}},
      {"a;;c", {"a", "", "c"}},
      {" a ;b|;c;d\n", {" a ", "b|", "c", "d\n"}},
      {"1;2;3;4;5;6;7", {"1", "2", "3", "4", "5", "6", "7"}},
  };
  std::vector<TradeRow> rows;
  std::time_t second = 0;
  do {  // again when the second changes meanwhile
    second = std::time(nullptr);
    rows.assign(2, TradeRow{});
    for (TradeRow& row : rows) {
      for (const auto& c : cases) row.extra_columns.emplace_back(c.column);
    }
    pick_alternatives(rows);
  } while (std::time(nullptr) != second);
  std::srand(static_cast<unsigned>(second));
  const auto drawn = static_cast<std::size_t>(std::rand());
  for (const TradeRow& row : rows) {
    for (std::size_t i = 0; i < std::size(cases); ++i) {
      EXPECT_EQ(row.extra_columns[i], cases[i].pieces[drawn % cases[i].pieces.size()])
          << cases[i].column;
    }
  }
}

}  // namespace
}  // namespace toplist
