#include "run/trade_row.h"

#include <bit>
#include <cstdlib>

namespace toplist {
namespace {

/// Whether `percents` / 100, rounded to 64 bits of significand, falls so far short that its
/// hundredfold, rounded too, stays below `percents`, which is a whole number from 1 to 2^38.
///
/// Let n be the significand of `percents`: 2^63 <= n < 2^64. If the quotient is exact or rounded
/// up, its hundredfold does not stay below. If it is rounded down, the division by 100 drops a
/// remainder r, a multiple of 4 below 50:
///
/// 1. The quotient's significand is n * 64 / 100 if that fills 64 bits. The hundredfold n * 64 - r
///    has 70 bits, of which 64 are kept: the next number below n * 64 is n * 64 - 64, and half-way
///    counts as n * 64, as n is even. So it stays below if r > 32, and only then.
/// 2. Otherwise it is n * 128 / 100. The hundredfold n * 128 - r has 71 bits, the next number below
///    is n * 128 - 128, and r < 50 does not reach half-way. Below a power of two the next number is
///    half as far; but there r is 24.
bool comes_out_lower(std::uint64_t percents) {
  constexpr std::uint64_t kLeastOfCase1 = 100ULL << 57;
  const std::uint64_t n = percents << std::countl_zero(percents);
  const std::uint64_t remainder = n % 100 * 64 % 100;
  return n >= kLeastOfCase1 && remainder > 32 && remainder < 50;
}

}  // namespace

// Each of the two roundings changes the result by at most 2^-64 of it, both together by hardly more
// than 100 * |x| / |y| / 2^63. As |x| <= 2^31, that is less than 1 / |y|, which is the least by
// which a result that is not whole differs from a whole number. So such a result is truncated as if
// it had not been rounded; only a whole one may come out lower.
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
