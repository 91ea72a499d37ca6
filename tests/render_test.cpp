#include "render/render.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "support/render_fixture.h"
#include "support/temp_dir.h"

namespace toplist {
namespace {

using test::Render;

constexpr std::int64_t kUsedUp = 50001;  ///< The counter once a template's passes are spent.

TEST_F(Render, EveryStatisticsTagShowsItsCounter) {
  std::int32_t next = -9;
  for (const char* period : {"60", "24", "07", "99"}) {
    for (const char* counter : {"rin", "uin", "out", "clk", "cef", "ctt", "ctg", "rec"}) {
      *test::find_counter(rows_[1], std::string(counter) + period) = next++;
    }
  }
  next = -9;
  for (const char* period : {"60", "24", "07", "99"}) {
    for (const char* counter : {"rin", "uin", "out", "clk", "cef", "ctt", "ctg", "rec"}) {
      std::int64_t passes = 0;
      std::string page;
      const std::string line = "<%%" + std::string(counter) + period + "_001%%>";
      EXPECT_FALSE(expand_tags(line, ranked_, passes, page));
      EXPECT_EQ(page, "<" + std::to_string(next++) + ">") << line;
    }
  }
}

TEST_F(Render, ExpandsTagsAndCountsPasses) {
  const struct {
    std::string line, page;
    std::int64_t passes;
  } cases[] = {
      {"", "", 1},
      {"no % tags 50%", "no % tags 50%", 1},
      {"A%%tid_000%%B", "A42B", 1},
      {"%%tid_000%% %%tid_001%%", "42 7", 2},
      {"x%%lnk_001%%", "x?id=7&u=u", 1},
      {"%%dom_000%%,%%url_000%%,%%tit_001%%,%%des_001%%,%%img_001%%", "d.com,u,T,D,I", 5},
      {"<%%tit_000%%>", "<>", 1},
      {"%%rin60_000%%", "-5", 1},
      // the rank: three characters, read as a number
      {"%%tid_004%%", " ", 1},
      {"%%tid_999%%", " ", 1},
      {"%%tid_-01%%", " ", 1},
      {"%%rin60_-01%%|", " |", 1},
      {"%%xyz_009%%.%%zzzzz_009%%.%%att00_009%%.", " . . .", 3},
      {"%%tid_ 1 %%%", "7%", 1},
      {"%%tid_+01%%", "7", 1},
      {"%%tid_1xx%%", "7", 1},
      {"%%tid_abc%%", "42", 1},
      {"%%rin60_x00%%", "-5", 1},
      // separators and names
      {"%%tid?000%%", "42", 1},
      {"%%tid%001%%", "7", 1},
      {"[%%TID_000%%%]", "[%]", 1},
      {"[%%xyz_000%%][%%rin_000%%][%%tid00_000%%][%%Rin60_000%%]", "[][][][]", 4},
      // column tags: entry NN + 3
      {"%%att00_001%%,%%att01_001%%,%%att02_001%%", "c0,c1,", 3},
      {"%%attic_001%%,%%att1x_001%%,%%att 1_001%%,%%att+1_001%%", "c0,c1,c1,c1", 4},
      {"%%att-1_001%%,%%att-3_001%%,%%att-4_001%%,%%att-9_001%%", "I,T,,", 4},
      // a short one shows entry 2 and swallows two characters
      {"<%%att_001%%ab>", "<I>", 1},
      {"<%%att_001%%a", "<I", 1},
      {"<%%att_001%%", "<I", 1},
      {"<%%att_000%%ab>", "<>", 1},
      {"<%%att_009%%ab>", "< ab>", 1},
      // adjacent tags: the long reading wins and the first tag is lost
      {"%%tid_000%%%%dom_000%%", "d.com", 2},
      {"%%tid_001%%%%tid_001%%.", "7.", 2},
      {"%%att_001%%%%dom_001%% and more text", "c0dom_001%% and more text", kUsedUp},
      {"%%rin60_000%%%%rin60_000%%", "-5-5", 2},
      // values are scanned again, with what follows them
      {"<%%tit_002%%>", "<42>", 2},
      {"%%des_002%%x", "50%x", 1},
      {"%%des_002%%%tid_000%%", "5042", 2},
      {"<%%att00_002%%>", "<ac0b>", 2},
      {"<%%att00_003%%>", "< >", 2},
      {"%%img_002%% and more text", "100%% and more text", kUsedUp},
      {"%%tit_003%%.", std::string(kUsedUp, 'x') + "%%tit_003%%.", kUsedUp},
      // malformed tags
      {"%%malformed line", "%%malformed line", kUsedUp},
      {"%%rin60_000", "%%rin60_000", kUsedUp},
      {"%%tid_000%  %%tid_000%%", "%%tid_000%  %%tid_000%%", kUsedUp},
      {"%%tid_000%%|%%rin60_000%", "42|%%rin60_000%", kUsedUp},
      {"%%tid_1%%........", "%%tid_1%%........", kUsedUp},
  };
  for (const auto& c : cases) {
    std::int64_t passes = 0;
    std::string page = "before ";
    EXPECT_FALSE(expand_tags(c.line, ranked_, passes, page)) << c.line;
    EXPECT_EQ(page, "before " + c.page) << c.line;
    EXPECT_EQ(passes, c.passes) << c.line;
  }
  std::int64_t passes = 0;
  std::string page;
  EXPECT_FALSE(expand_tags("A%%tid_000%%B", {}, passes, page));
  EXPECT_EQ(page, "A B");
}

TEST_F(Render, AMarkTooCloseToTheEndOfItsLineStops) {
  constexpr std::size_t kWithinTheTag = 0;  // the mark came with a value
  const struct {
    std::string line;
    std::size_t column;
  } cases[] = {
      {"%%", 1},
      {"50%%", 3},
      {"%%tid_000%", 1},
      {"%%........", 1},
      {"A%%tid_000%%B50%%", 16},
      {std::string(13, '%'), 12},
      {"%%tid_000%%%%", 12},
      {"%%tid_009%%%%dom_000%%", 21},  // " dom_000%%": a missing rank swallows 13 characters
      {"%%tid_000% %%tid_000%%", 21},
      {"%%att_001%%%%dom_001%%.", 21},
      {"<%%tit_000%%%des_000%%>", 21},
      {"%%img_002%%", kWithinTheTag},
      {"%%img_002%%......", kWithinTheTag},
  };
  for (const auto& c : cases) {
    std::int64_t passes = 0;
    std::string page;
    const auto column = expand_tags(c.line, ranked_, passes, page);
    ASSERT_TRUE(column) << c.line;
    EXPECT_EQ(*column, c.column == kWithinTheTag ? *column : c.column) << c.line;
    EXPECT_LE(*column, c.line.size()) << c.line;
  }
}

TEST_F(Render, NearThePassLimit) {
  const struct {
    std::int64_t before;
    const char* page;
    std::int64_t after;
  } cases[] = {
      {49996, "42 42 42 42", 50000},
      {49997, "42 42 42 42", 50001},
      {49998, "42 42 42 %%tid_000%%", 50001},
      {49999, "42 42 %%tid_000%% %%tid_000%%", 50001},
      {50000, "42 %%tid_000%% %%tid_000%% %%tid_000%%", 50001},
      {50001, "42 %%tid_000%% %%tid_000%% %%tid_000%%", 50002},
  };
  for (const auto& c : cases) {
    std::int64_t passes = c.before;
    std::string page;
    EXPECT_FALSE(
        expand_tags("%%tid_000%% %%tid_000%% %%tid_000%% %%tid_000%%", ranked_, passes, page));
    EXPECT_EQ(page, c.page) << c.before;
    EXPECT_EQ(passes, c.after) << c.before;
  }
  std::int64_t passes = 70000;
  std::string page;
  EXPECT_FALSE(expand_tags("%%malformed line", ranked_, passes, page));
  EXPECT_EQ(passes, 70001);
}

std::string repeat(std::string_view text, int count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

TEST_F(Render, TemplatesDropBlocksAndCountPasses) {
  const std::string two = "%%tid_000%% %%tid_000%%\n";
  const std::string first_only = "42 %%tid_000%%\n";
  const struct {
    std::string text, page;
  } cases[] = {
      {"", ""},
      {"a", "a\n"},
      {"a\r\n\nb\n", "a\r\n\nb\n"},
      {"a\nb<tlxt>c\nd\ne</tlxt>f\ng\n", "a\ng\n"},
      {"a\n</tlxt>\nb\n", "a\nb\n"},
      {"<tlxt></tlxt>\nb\n", "b\n"},
      {"x</tlxt><tlxt>\nb\n", "b\n"},
      {"<tlxt>\na\n<tlxt></tlxt>\nb\n", "b\n"},
      {"<tlxt>\na\n<tlxt>\n</tlxt>\nb\n</tlxt>\nc", "b\nc\n"},
      {"a\n<tlxt>\nb\nc\n", "a\n"},
      {"<tlxt>\na\n</tlxt>", ""},
      {"<TLXT>\n< tlxt>\n<tlx\nt>\n", "<TLXT>\n< tlxt>\n<tlx\nt>\n"},
      {"<tlxt>%%\n%%\n</tlxt>%%\nok\n", "ok\n"},  // no stop in what is dropped
      {repeat("a\n", 60000), repeat("a\n", 60000)},
      {repeat("a\n", 49999) + two + two, repeat("a\n", 49999) + "42 42\n" + first_only},
      {"<tlxt>\n" + repeat("a\n", 60000) + "</tlxt>\n" + two, "42 42\n"},  // cost no passes
      {"%%malformed line\n" + two + "b\n" + two,
       "%%malformed line\n" + first_only + "b\n" + first_only},
  };
  for (const auto& c : cases) {
    std::string page;
    EXPECT_FALSE(render_template(c.text, ranked_, page)) << c.text.substr(0, 80);
    EXPECT_TRUE(page == c.page) << c.text.substr(0, 80) << " gives\n" << page.substr(0, 80);
  }
}

TEST_F(Render, AStopNamesThePlaceAndLeavesTheOldPage) {
  const test::TempDir dir;
  const std::string path = dir.write("page", "a\n<tlxt>\n</tlxt>\n%%tid_000%% 50%%\nb\n");
  const std::string output = dir.write("out", "old");
  try {
    render_toplist(path, output, ranked_);
    FAIL() << "did not stop";
  } catch (const std::out_of_range& stop) {
    const std::string text = stop.what();
    for (const std::string& part : {path, std::string("line 4"), std::string("column 15")}) {
      EXPECT_NE(text.find(part), std::string::npos) << text;
    }
  }
  EXPECT_EQ(dir.read("out"), "old");
  ASSERT_TRUE(render_toplist(dir.write("page", "%%tid_000%%"), output, ranked_));
  EXPECT_EQ(dir.read("out"), "42\n");
  ASSERT_TRUE(render_toplist(dir.write("page", "<tlxt>"), output, ranked_));
  EXPECT_EQ(dir.read("out"), "");
}

}  // namespace
}  // namespace toplist
