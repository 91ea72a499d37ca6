// The expansion of tags against the same done slowly, step by step.

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

#include "render/render.h"
#include "support/render_fixture.h"
#include "support/slow_expansion.h"

namespace toplist {
namespace {

using test::Render;
using test::slow_expansion;

/// A line of single characters of which tags are made, or of larger parts of tags.
std::string random_line(std::mt19937& random) {
  constexpr std::string_view kCharacters = "%%%%%%%01tid_ax";
  constexpr std::string_view kParts[] = {"%%",    "%",           "%%tid_000%%", "%%tit_00",
                                         "%%att", "_003%%",      "%%att00_00",  "1%%",
                                         "2%%",   "3",           "_",           "%%rin60_000%%",
                                         "x",     "%%des_002%%", "%%img_00",    "%%zzzzz_001%%"};
  std::string line;
  const std::size_t size = 11 + random() % 50;
  const bool characters = random() % 2 == 0;
  while (line.size() < size) {
    line += characters ? kCharacters.substr(random() % kCharacters.size(), 1)
                       : kParts[random() % std::size(kParts)];
  }
  return line;
}

TEST_F(Render, RandomLinesExpandAsTheSlowStepsDo) {
  std::mt19937 random(4);
  int stopped = 0;
  constexpr int kLines = 30000;
  for (int i = 0; i < kLines; ++i) {
    const std::string line = random_line(random);
    const std::int64_t before = 50002 - static_cast<std::int64_t>(random() % 20);
    const RankedRows rows = RankedRows(ranked_).first(random() % 5);
    std::int64_t passes = before;
    std::string page = line;
    const bool complete = expand_tags(page, rows, passes);
    std::int64_t slow_passes = before;
    try {
      const std::string expected = slow_expansion(line, rows, slow_passes);
      ASSERT_TRUE(complete) << line;
      ASSERT_EQ(page, expected) << line;
      ASSERT_EQ(passes, slow_passes) << line;
    } catch (const std::out_of_range&) {
      ASSERT_FALSE(complete) << line;
      ++stopped;
    }
  }
  EXPECT_GT(stopped, kLines / 100);
  EXPECT_LT(stopped, kLines - kLines / 4);
}

// Parts that neither start nor end in "%" and expand completely do so alone as within a line.
TEST_F(Render, AMegabyteLineExpandsAsItsPartsDo) {
  const std::string filler(40, '.');
  std::string line, expected;
  std::int64_t expected_passes = 0;
  rows_[1].domain = "a.long.domain.that.takes.more.room.than.its.tag.com";
  const char* const parts[] = {"<%%tid_000%%>", "<%%att_001%%ab>", "<%%rin60_000%%%%rec99_001%%>",
                               "<%%dom_001%%>", "<%%tit_002%%>",   "<%%tid_000%%%%dom_001%%>",
                               "<%%lnk_009%%>", "<%%tit_000%%>"};
  for (int i = 0; i < 20000; ++i) {
    const std::string part = parts[i % 8] + filler;
    line += part;
    expected += slow_expansion(part, ranked_, expected_passes);
  }
  ASSERT_GT(line.size(), 1'000'000U);
  std::int64_t passes = 0;
  EXPECT_TRUE(expand_tags(line, ranked_, passes));
  EXPECT_TRUE(line == expected);
  EXPECT_EQ(passes, expected_passes);
  EXPECT_EQ(passes, 27500);
}

}  // namespace
}  // namespace toplist
