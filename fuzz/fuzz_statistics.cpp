// The trade database, the extra columns, a history and the recent periods, from the same bytes; and
// the percentage against its definition, step by step.

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "input.h"
#include "run/statistics.h"

namespace {

using toplist::TradeRecord;
using toplist::TradeRow;
using toplist::fuzz::require;

/// The keyword says that the type is known to be the compilers' own and not the standard's.
__extension__ using Wide = unsigned __int128;

/// x * 2^exponent with x below 2^64, as the processor holds it.
struct Extended {
  Wide significand;
  int exponent;
};

/// numerator / denominator, or the numerator itself when it is 1, to 64 significant bits: to the
/// nearest, a tie to the even one.
Extended rounded_quotient(Wide numerator, Wide denominator) {
  constexpr Wide kTop = static_cast<Wide>(1) << 63;
  int exponent = 0;
  for (; numerator / denominator < kTop; numerator <<= 1) --exponent;
  for (; numerator / denominator >= 2 * kTop; denominator <<= 1) ++exponent;
  Wide quotient = numerator / denominator;
  const Wide remainder = numerator % denominator;
  if (2 * remainder > denominator || (2 * remainder == denominator && quotient % 2 == 1)) {
    ++quotient;
  }
  return {quotient, exponent};
}

/// The percentage by its definition: quotient, rounded; times 100, rounded; truncated.
std::int32_t exact_percentage(std::int32_t x, std::int32_t y) {
  if (x == 0 || y == 0) return 0;
  const auto magnitude = [](std::int32_t value) {
    return static_cast<Wide>(value < 0 ? -static_cast<std::int64_t>(value) : value);
  };
  const Extended quotient = rounded_quotient(magnitude(x), magnitude(y));
  Extended percents = rounded_quotient(quotient.significand * 100, 1);
  percents.exponent += quotient.exponent;
  // At the most 2^31 * 100, so the exponent is below zero.
  const int shift = -percents.exponent;
  const auto whole = shift > 127 ? 0 : static_cast<std::int64_t>(percents.significand >> shift);
  const std::int64_t result = (x < 0) == (y < 0) ? whole : -whole;
  return result > INT32_MAX || result < INT32_MIN ? INT32_MIN : static_cast<std::int32_t>(result);
}

/// Compares some of numbers of all sizes, and some that are whole.
void check_percentages(std::uint32_t seed) {
  std::mt19937 random(seed);
  for (int i = 0; i < 8; ++i) {
    const auto x = static_cast<std::int32_t>(random()) >> random() % 32;
    const auto y = static_cast<std::int32_t>(random()) >> random() % 32;
    require(toplist::percentage(x, y) == exact_percentage(x, y), "percentage");
    require(toplist::percentage(x, 100) == exact_percentage(x, 100), "whole percentage");
  }
}

std::vector<TradeRow> some_rows(std::string_view bytes) {
  std::vector<TradeRecord> trades(4);
  for (std::size_t i = 0; i < trades.size(); ++i) {
    trades[i].trade_id = static_cast<std::int32_t>(i);
    trades[i].domain[0] = static_cast<char>('a' + i);
    trades[i].status = 1;
  }
  TradeRecord& wild = trades.emplace_back();
  std::memcpy(&wild, bytes.data(), std::min(bytes.size(), sizeof wild));
  return toplist::build_rows(trades);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  toplist::fuzz::Input input(bytes, size);
  const auto x = input.integer<std::int32_t>();
  const auto y = input.integer<std::int32_t>();
  require(toplist::percentage(x, y) == exact_percentage(x, y), "percentage");
  check_percentages(static_cast<std::uint32_t>(x) ^ static_cast<std::uint32_t>(y));

  const std::string text(input.rest());
  std::vector<TradeRow> rows = some_rows(text);
  toplist::attach_extra_columns(text, rows);
  for (TradeRow& row : rows) toplist::add_history(text, row.periods[toplist::kPeriod99]);
  toplist::read_recent_periods(text, rows);
  return 0;
}
