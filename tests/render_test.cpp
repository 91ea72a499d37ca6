#include "render/render.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "support/render_fixture.h"
#include "support/text_cases.h"

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

/// The line and the passes, which are 50001 once they are used up.
TEST_F(Render, ExpandsTagsAndCountsPasses) {
  test::expect_cases("expand_tags", [this](const std::string& line) {
    const Expansion result = expand(line, ranked_);
    EXPECT_TRUE(result.complete) << line;
    return result.page + " | " + std::to_string(result.passes);
  });
  EXPECT_EQ(expand("%%tit_003%%.", ranked_).page, std::string(kUsedUp, 'x') + "%%tit_003%%.");
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
  test::expect_cases("render_template", [this](const std::string& text) {
    return render_template("", text, ranked_);
  });
  const std::string two = "%%tid_000%% %%tid_000%%\n";
  const std::string first_only = "42 %%tid_000%%\n";
  const struct {
    std::string text, page;
  } cases[] = {
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
