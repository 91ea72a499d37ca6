#include "toplistctl/lib/templates/template_walk.h"

#include <gtest/gtest.h>

#include <string>

#include "support/render_fixture.h"

namespace toplist::ctl {
namespace {

using test::Render;

TEST_F(Render, TheWalkTellsWhereInTheTemplateAMarkStops) {
  const struct {
    std::string line;
    std::size_t column;
  } cases[] = {
      {"50%%", 3},
      {"%%tid_000%", 1},
      {"A%%tid_000%%B50%%", 16},
      {std::string(13, '%'), 12},
      {"%%tid_009%%%%dom_000%%", 21},  // " dom_000%%": a missing rank swallows 13 characters
      {"%%tid_000% %%tid_000%%", 21},
      {"%%att_001%%%%dom_001%%.", 21},
      {"<%%tit_000%%%des_000%%>", 21},
      {"%%img_002%%......", 1},  // the value brings it in: the column is its tag's
  };
  for (const auto& c : cases) {
    std::vector<StraySpot> strays;
    walk_template("a\n" + c.line + "\nb", ranked_,
                  {.tag = [](const TagSpot&) {},
                   .stray = [&strays](const StraySpot& stray) { strays.push_back(stray); },
                   .open_block = [](std::size_t) {}});
    ASSERT_EQ(strays.size(), 1U) << c.line;
    EXPECT_EQ(strays[0].line, 2U) << c.line;
    EXPECT_EQ(strays[0].column, c.column) << c.line;
  }
}

}  // namespace
}  // namespace toplist::ctl
