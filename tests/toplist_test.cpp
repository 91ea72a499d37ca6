#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "support/temp_dir.h"
#include "support/text_cases.h"
#include "toplist/alternatives.h"
#include "toplist/definitions.h"

namespace toplist {
namespace {

using test::TempDir;

constexpr const char* kEmptyDigest = "da39a3ee5e6b4b0d3255bfef95601890afd80709";

TEST(Definitions, TakeNineFieldsEach) {
  test::expect_cases("parse_definitions", [](const std::string& text) {
    std::string definitions;
    for (const ToplistDefinition& d : parse_definitions(text)) {
      definitions += d.template_path + '>' + d.output_path + ',' + d.order_by + ',' + d.build_mode +
                     ',' + d.check_value + ';';
    }
    return definitions;
  });
}

TEST(Definitions, SettingsTakeThreeFieldsEach) {
  test::expect_cases("parse_settings", [](const std::string& text) {
    std::string settings;
    for (const ToplistSetting& s : parse_settings(text)) {
      settings.append(s.template_name).append(":").append(s.key).append(">").append(s.value) += ';';
    }
    return settings;
  });
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
