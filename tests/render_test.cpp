#include "render/render.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "support/render_fixture.h"

namespace toplist {
namespace {

using test::Render;

constexpr std::int64_t kUsedUp = 50001;  ///< The counter once a template's passes are spent.

struct Expansion {
  std::string page = {};
  std::int64_t passes = 0;
  bool complete = true;
};

Expansion expand(const std::string& line, RankedRows rows, std::int64_t passes = 0) {
  Expansion result{.page = line, .passes = passes};
  result.complete = expand_tags(result.page, rows, result.passes);
  return result;
}

TEST_F(Render, EveryStatisticsTagShowsItsCounter) {
  std::int32_t value = 0;
  for (const std::string period : {"60", "24", "07", "99"}) {
    for (const std::string counter : {"rin", "uin", "out", "clk", "cef", "ctt", "ctg", "rec"}) {
      const std::string name = counter + period;
      *test::find_counter(rows_[1], name) = ++value;
      const std::string line = "<%%" + name + "_001%%>";
      EXPECT_EQ(expand(line, ranked_).page, "<" + std::to_string(value) + ">") << line;
    }
  }
}

TEST_F(Render, ExpandsTagsAndCountsPasses) {
  const struct {
    std::string line, page;
    std::int64_t passes;
  } cases[] = {
      {"", "", 1},
      {"A%%tid_000%%B", "A42B", 1},
      {"%%tid_000%% %%tid_001%%", "42 7", 2},
      {"%%lnk_001%%,%%dom_000%%,%%url_000%%", "?id=7&u=u,d.com,u", 3},
      {"%%tit_001%%,%%des_001%%,%%img_001%%,%%tit_000%%", "T,D,I,", 4},
      // the rank: three characters, read as a number
      {"%%tid_004%%", " ", 1},
      {"%%tid_-01%%", " ", 1},
      {"%%xyz_009%%.%%zzzzz_009%%.%%att00_009%%.", " . . .", 3},
      {"%%tid_ 1 %%%", "7%", 1},
      // separators and names
      {"%%tid%001%%", "7", 1},
      {"[%%TID_000%%%]", "[%]", 1},
      {"[%%xyz_000%%][%%rin_000%%][%%tid00_000%%][%%Rin60_000%%]", "[][][][]", 4},
      // column tags: entry NN + 3
      {"%%att00_001%%,%%att01_001%%,%%att02_001%%", "c0,c1,", 3},
      {"%%attic_001%%,%%att1x_001%%,%%att 1_001%%,%%att+1_001%%", "c0,c1,c1,c1", 4},
      {"%%att-1_001%%,%%att-3_001%%,%%att-4_001%%,%%att-9_001%%", "I,T,,", 4},
      // a short one shows entry 2 and swallows two characters
      {"<%%att_001%%ab>", "<I>", 1},
      {"<%%att_009%%ab>", "< ab>", 1},
      // adjacent tags: the long reading wins and the first tag is lost
      {"%%tid_000%%%%dom_000%%", "d.com", 2},
      {"%%att_001%%%%dom_001%% and more text", "c0dom_001%% and more text", kUsedUp},
      {"%%rin60_000%%%%rin60_000%%", "-5-5", 2},
      // values are scanned again, with what follows them
      {"<%%tit_002%%>", "<42>", 2},
      {"%%des_002%%%tid_000%%", "5042", 2},
      {"<%%att00_002%%>", "<ac0b>", 2},
      {"%%tit_003%%.", std::string(kUsedUp, 'x') + "%%tit_003%%.", kUsedUp},
      // malformed tags
      {"%%malformed line", "%%malformed line", kUsedUp},
      {"%%tid_000%%|%%rin60_000%", "42|%%rin60_000%", kUsedUp},
  };
  for (const auto& c : cases) {
    const Expansion result = expand(c.line, ranked_);
    EXPECT_TRUE(result.complete) << c.line;
    EXPECT_EQ(result.page, c.page) << c.line;
    EXPECT_EQ(result.passes, c.passes) << c.line;
  }
  EXPECT_EQ(expand("A%%tid_000%%B", {}).page, "A B");
}

TEST_F(Render, AMarkTooCloseToTheEndOfItsLineStops) {
  for (const char* line : {"50%%", "%%tid_000%", "%%tid_009%%%%dom_000%%",
                           "<%%tit_000%%%des_000%%>", "%%img_002%%......"}) {
    EXPECT_FALSE(expand(line, ranked_).complete) << line;
  }
  try {
    render_template("d/tl/top.tpl", "a\n<tlxt>\n</tlxt>\n%%tid_000%% 50%%\nb\n", ranked_);
    FAIL() << "did not stop";
  } catch (const std::out_of_range& stop) {
    EXPECT_TRUE(std::string_view(stop.what()).starts_with("d/tl/top.tpl, line 4: ")) << stop.what();
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
      {50001, "42 %%tid_000%% %%tid_000%% %%tid_000%%", 50002},
  };
  const std::string line = "%%tid_000%% %%tid_000%% %%tid_000%% %%tid_000%%";
  for (const auto& c : cases) {
    const Expansion result = expand(line, ranked_, c.before);
    EXPECT_EQ(result.page, c.page) << c.before;
    EXPECT_EQ(result.passes, c.after) << c.before;
  }
  EXPECT_EQ(expand("%%malformed line", ranked_, 70000).passes, 70001);
}

std::string repeat(std::string_view text, int count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

TEST_F(Render, TemplatesDropBlocksAndCountPasses) {
  const std::string two = "%%tid_000%% %%tid_000%%\n";
  const std::string first_only = "42 %%tid_000%%\n";
  const std::string bytes("\xE4 \x80\xFF \0 |;<>&\r\n", 13);
  const struct {
    std::string text, page;
  } cases[] = {
      {"", ""},
      {"a\r\n\nb\n", "a\r\n\nb\n"},
      {"a\nb<tlxt>c\nd\ne</tlxt>f\ng\n", "a\ng\n"},
      {"x</tlxt><tlxt>\nb\n", "b\n"},
      {"<tlxt>\na\n<tlxt>\n</tlxt>\nb\n</tlxt>\nc", "b\nc\n"},
      {"a\n<tlxt>\nb\nc\n", "a\n"},
      {bytes + "%%tid_000%%", bytes + "42\n"},
      {"<TLXT>\n< tlxt>\n<tlx\nt>\n", "<TLXT>\n< tlxt>\n<tlx\nt>\n"},
      {"<tlxt>%%\n%%\n</tlxt>%%\nok\n", "ok\n"},  // no stop in what is dropped
      {repeat("a\n", 49999) + two + two, repeat("a\n", 49999) + "42 42\n" + first_only},
      {"<tlxt>\n" + repeat("a\n", 60000) + "</tlxt>\n" + two, "42 42\n"},  // cost no passes
      {"%%malformed line\n" + two + "b\n" + two,
       "%%malformed line\n" + first_only + "b\n" + first_only},
  };
  for (const auto& c : cases) {
    const std::string page = render_template("", c.text, ranked_);
    EXPECT_TRUE(page == c.page) << c.text.substr(0, 80) << " gives\n" << page.substr(0, 80);
  }
}

}  // namespace
}  // namespace toplist
