#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace toplist {

/// One statistics period of one trade: 16 signed 32-bit figures.
///
/// Counters are as the traffic counters wrote them and may be negative. `percent` holds whole
/// percents, truncated toward zero; all stay 0 until the trade's record in "d/t/sum" has been read
/// to its last field.
struct PeriodBlock {
  std::int32_t rin = 0, uin = 0, out = 0, clk = 0, cef = 0, ctt = 0, ctg = 0, rec = 0;
  std::array<std::int32_t, 5> percent{};  ///< In the order of kRatios.
  std::array<std::int32_t, 3>
      further{};  ///< From "d/t/sum" as they stand; 0 in the all-time block.
};
static_assert(sizeof(PeriodBlock) == 16 * sizeof(std::int32_t));

using Counter = std::int32_t PeriodBlock::*;

/// The counters as the site's text files hold them: "cef" comes seventh there, although it is fifth
/// in a block.
inline constexpr std::array<Counter, 8> kFileOrder{
    &PeriodBlock::rin, &PeriodBlock::uin, &PeriodBlock::out, &PeriodBlock::clk,
    &PeriodBlock::ctt, &PeriodBlock::ctg, &PeriodBlock::cef, &PeriodBlock::rec,
};

/// A percentage: so many `numerator` per hundred `denominator`.
struct Ratio {
  Counter numerator;
  Counter denominator;
};

/// The five percentages of a block, in the order in which `percent` holds them and in which the
/// order-by values name them.
inline constexpr std::array<Ratio, 5> kRatios{{
    {&PeriodBlock::clk, &PeriodBlock::rin},
    {&PeriodBlock::cef, &PeriodBlock::uin},
    {&PeriodBlock::cef, &PeriodBlock::out},
    {&PeriodBlock::ctt, &PeriodBlock::out},
    {&PeriodBlock::out, &PeriodBlock::rin},
}};

/// x / y in whole percents, truncated toward zero; 0 when y is 0.
///
/// The result is what 80-bit floating point gives: the quotient is formed first, rounded to a
/// significand of 64 bits, and only then multiplied, rounded the same. So some exact percentages
/// come out one lower (53 of 100 gives 52), and pages show them so (contract: divide-first). It is
/// computed in integers, alike on every processor. A result outside the 32-bit range is INT32_MIN.
std::int32_t percentage(std::int32_t x, std::int32_t y);

inline std::int32_t percentage(const PeriodBlock& block, const Ratio& ratio) {
  return percentage(block.*ratio.numerator, block.*ratio.denominator);
}

/// Positions in TradeRow::periods. The names carry the suffix of the period in template tags
/// ("rin60", "rin24", "rin07", "rin99"); 99 is all time.
enum Period : std::size_t { kPeriod60, kPeriod24, kPeriod07, kPeriod99, kPeriodCount };

/// One active trade's statistics row.
struct TradeRow {
  std::string id;  ///< The trade's number as decimal text; the key of "d/t/sum" records.
  std::array<PeriodBlock, kPeriodCount> periods{};
  std::string domain;
  std::string url;
  std::int32_t mark = 0;  ///< 1 when thumbnails are required and the trade has none.
  /// The trade's columns from "d/tl/tl.a1", in file order: title, description, picture, then those
  /// of the column tags. Views into the text of that file, which the run keeps to its end.
  std::vector<std::string_view> extra_columns;
  std::string order_key;  ///< The order-by value of the toplist that was ranked last.
};

}  // namespace toplist
