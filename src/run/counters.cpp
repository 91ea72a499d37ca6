#include "run/counters.h"

#include <bit>
#include <cstdlib>

namespace toplist {
namespace {

/// Whether `percents`, a whole number from 1 to 2^38, comes out one lower because its hundredth is
/// rounded down far enough. docs/percentages.md has the proof.
bool comes_out_lower(std::uint64_t percents) {
  constexpr std::uint64_t kLeastRoundedSo = 100ULL << 57;
  const std::uint64_t n = percents << std::countl_zero(percents);
  const std::uint64_t remainder = n % 100 * 64 % 100;
  return n >= kLeastRoundedSo && remainder > 32 && remainder < 50;
}

}  // namespace

// Rounding never takes a result that is not whole as far as a whole number, so only whole ones need
// the check (docs/percentages.md).
std::int32_t percentage(std::int32_t x, std::int32_t y) {
  if (x == 0 || y == 0) return 0;
  const std::int64_t hundredfold = std::int64_t{x} * 100;
  std::int64_t percents = hundredfold / y;
  if (hundredfold % y == 0 && comes_out_lower(static_cast<std::uint64_t>(std::abs(percents)))) {
    percents -= percents > 0 ? 1 : -1;
  }
  return percents == static_cast<std::int32_t>(percents) ? static_cast<std::int32_t>(percents)
                                                         : INT32_MIN;
}

}  // namespace toplist
