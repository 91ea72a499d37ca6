// A whole run of the built program in a freshly written sample site.

#include <gtest/gtest.h>

#include <iterator>
#include <regex>
#include <string>

#include "sample/sample_site.h"
#include "support/site.h"

namespace toplist::test {
namespace {

/// Fewer than a sample usually has: drawing their pictures takes most of the time.
constexpr std::size_t kTrades = 24;

/// How often the pattern is found in the page.
std::ptrdiff_t count(const std::string& page, const char* pattern) {
  const std::regex regex(pattern);
  return std::distance(std::sregex_iterator(page.begin(), page.end(), regex), {});
}

TEST(SampleSite, IsBuiltWithoutAFailure) {
  const Site site{Site::Bare{}};
  ASSERT_EQ(site::write_sample_site(site.path(""), {.trades = kTrades}), "");
  const auto before = site.contents();
  EXPECT_EQ(site.run(), RunResult{});
  EXPECT_EQ(site.log(), "");

  std::size_t pages = 0;
  for (const auto& [name, text] : site.contents()) {
    if (before.contains(name)) {
      EXPECT_EQ(text, before.at(name)) << name;
      continue;
    }
    ++pages;
    EXPECT_EQ(text.find("%%"), std::string::npos) << name;
    // Only the entries of ranks that no trade has, which the style sheet hides, have no title.
    EXPECT_EQ(count(text, "<a [^>]*>\\s*</a>"), count(text, "data-id=\" \"")) << name;
    EXPECT_GT(count(text, "data-id=\"[0-9]+\""), 0) << name;
    EXPECT_NE(text.find("</html>"), std::string::npos) << name;
  }
  EXPECT_EQ(pages, site::SampleOptions{}.toplists);
}

}  // namespace
}  // namespace toplist::test
