#include "run/trade_row.h"

#include <limits>

namespace toplist {

static_assert(
    std::numeric_limits<long double>::digits == 64,
    "percentages are computed with a 64-bit significand, as pages have always shown them");

std::int32_t percentage(std::int32_t x, std::int32_t y) {
  if (y == 0) return 0;
  const long double quotient = static_cast<long double>(x) / static_cast<long double>(y);
  const long double percents = quotient * 100.0L;
  constexpr long double kLimit = 2147483648.0L;
  if (percents <= -kLimit - 1.0L || percents >= kLimit) {
    return std::numeric_limits<std::int32_t>::min();
  }
  return static_cast<std::int32_t>(percents);
}

}  // namespace toplist
