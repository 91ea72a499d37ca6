// The program built for another processor beside the one built for this machine: the same bytes
// from the same site.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <string>
#include <thread>

#include "support/random_site.h"

namespace toplist::test {
namespace {

constexpr std::uint64_t kSites = 12;
constexpr int kOrderValues = 61;  // one more than there are

/// A random site with a toplist for each order-by value besides.
struct EveryOrderSite : RandomSite {
  explicit EveryOrderSite(std::uint64_t seed) : RandomSite(seed) {
    for (int value = 1; value <= kOrderValues; ++value) {
      const std::string order_by = std::to_string(value);
      add_toplist("by" + order_by, template_text(), order_by);
    }
  }
};

using Clock = std::chrono::system_clock;

/// Runs each program in its site, both within the second that decides which alternatives are
/// picked.
void run_both(const Site& native, const Site& emulated) {
  constexpr int kMostTries = 30;
  for (int tries = 0; tries < kMostTries; ++tries) {
    // From its beginning, as a busy machine takes most of it; time() may be a tick behind.
    std::this_thread::sleep_until(std::chrono::ceil<std::chrono::seconds>(Clock::now()) +
                                  std::chrono::milliseconds(20));
    const std::time_t second = std::time(nullptr);
    const RunResult result = native.start({.program = TOPLIST_NATIVE_PROGRAM});
    const RunResult other = emulated.run();
    ASSERT_EQ(other, (RunResult{result.status, result.signal, result.out, other.err}));
    if (std::time(nullptr) == second) return;
  }
  FAIL() << "the two runs never fell within one second";
}

TEST(Platform, BuildsTheSamePagesAsTheOther) {
  for (std::uint64_t seed = 0; seed < kSites; ++seed) {
    SCOPED_TRACE(seed);
    const EveryOrderSite native(seed), emulated(seed);
    ASSERT_NO_FATAL_FAILURE(run_both(native, emulated));
    EXPECT_EQ(emulated.log(), native.log());
    auto files = native.contents(), others = emulated.contents();
    for (auto* contents : {&files, &others})
      contents->erase("d/tl/tl");  // may name the site's root
    EXPECT_EQ(others, files);
  }
}

}  // namespace
}  // namespace toplist::test
