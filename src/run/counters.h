#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace toplist {

/// One statistics period of one trade: 16 signed 32-bit figures.
///
/// Counters have the values that the traffic counters wrote, which may be negative. `percent` holds
/// whole percents, truncated toward zero. They are 0 until the trade's record in "d/t/sum" has been
/// read to its last field.
struct PeriodBlock {
  std::int32_t rin = 0, uin = 0, out = 0, clk = 0, cef = 0, ctt = 0, ctg = 0, rec = 0;
  std::array<std::int32_t, 5> percent{};  ///< In the order of kRatios.
  std::array<std::int32_t, 3> further{};  ///< From "d/t/sum", unchanged; 0 in the all-time block.
};
static_assert(sizeof(PeriodBlock) == 16 * sizeof(std::int32_t));

using Counter = std::int32_t PeriodBlock::*;

/// Positions in TradeRow::periods; 99 is all time.
enum Period : std::size_t { kPeriod60, kPeriod24, kPeriod07, kPeriod99, kPeriodCount };

/// The periods' names, in the order of Period.
inline constexpr std::array<std::string_view, kPeriodCount> kPeriodNames{"60", "24", "07", "99"};

/// The properties of a counter.
struct CounterEntry {
  std::string_view name;
  Counter member;
  std::size_t file_position;  ///< among the counters of a period in "d/t/sum" and in histories
};

/// All counters, in the order of a block. In the files "cef" comes seventh.
inline constexpr std::array<CounterEntry, 8> kCounters{{
    {"rin", &PeriodBlock::rin, 0},
    {"uin", &PeriodBlock::uin, 1},
    {"out", &PeriodBlock::out, 2},
    {"clk", &PeriodBlock::clk, 3},
    {"cef", &PeriodBlock::cef, 6},
    {"ctt", &PeriodBlock::ctt, 4},
    {"ctg", &PeriodBlock::ctg, 5},
    {"rec", &PeriodBlock::rec, 7},
}};

/// The counters in the order of the site's text files.
inline constexpr auto kFileOrder = [] {
  std::array<Counter, kCounters.size()> order{};
  for (const CounterEntry& counter : kCounters) order[counter.file_position] = counter.member;
  return order;
}();

constexpr std::string_view counter_name(Counter member) {
  return std::find_if(kCounters.begin(), kCounters.end(),
                      [member](const CounterEntry& entry) { return entry.member == member; })
      ->name;
}

inline constexpr std::size_t kCounterNameLength = 3;
inline constexpr std::size_t kPeriodNameLength = 2;

/// A counter of a period.
struct Statistic {
  Period period;
  Counter counter;
};

template <Period period, Counter counter>
inline constexpr auto kStatisticText = [] {
  std::array<char, kCounterNameLength + kPeriodNameLength> text{};
  char* const end = std::copy_n(counter_name(counter).data(), kCounterNameLength, text.data());
  std::copy_n(kPeriodNames[period].data(), kPeriodNameLength, end);
  return text;
}();
/// The statistic's name, such as "rin60" for "rin" of period 60: static text.
template <Period period, Counter counter>
inline constexpr std::string_view kStatisticName{kStatisticText<period, counter>.data(),
                                                 kStatisticText<period, counter>.size()};

/// The statistic of a name such as "rin60", which is "rin" of period 60. Nothing for other texts.
constexpr std::optional<Statistic> find_statistic(std::string_view name) {
  if (name.size() != kCounterNameLength + kPeriodNameLength) return std::nullopt;
  const auto counter =
      std::find_if(kCounters.begin(), kCounters.end(),
                   [name](const CounterEntry& entry) { return name.starts_with(entry.name); });
  const auto period =
      std::find(kPeriodNames.begin(), kPeriodNames.end(), name.substr(kCounterNameLength));
  if (counter == kCounters.end() || period == kPeriodNames.end()) return std::nullopt;
  return Statistic{static_cast<Period>(period - kPeriodNames.begin()), counter->member};
}

/// A percentage: so many `numerator` per hundred `denominator`.
struct Ratio {
  std::string_view name;
  Counter numerator;
  Counter denominator;
};

/// The five percentages of a block, in the order in which `percent` holds them and in which the
/// order-by values name them.
inline constexpr std::array<Ratio, 5> kRatios{{
    {"clk/rin", &PeriodBlock::clk, &PeriodBlock::rin},
    {"cef/uin", &PeriodBlock::cef, &PeriodBlock::uin},
    {"cef/out", &PeriodBlock::cef, &PeriodBlock::out},
    {"ctt/out", &PeriodBlock::ctt, &PeriodBlock::out},
    {"out/rin", &PeriodBlock::out, &PeriodBlock::rin},
}};

/// The names of a block's further values.
inline constexpr std::array<std::string_view, 3> kFurtherNames{"further1", "further2", "further3"};

/// x / y in whole percents, truncated toward zero; 0 when y is 0.
///
/// The result is what 80-bit floating point gives: the quotient is formed first, rounded to a
/// significand of 64 bits, and only then multiplied, with the same rounding. So some exact
/// percentages come out one lower (53 of 100 gives 52), and pages show them (contract:
/// divide-first). Integers compute it, so every processor gives the same result. A result outside
/// the 32-bit range is INT32_MIN.
std::int32_t percentage(std::int32_t x, std::int32_t y);

inline std::int32_t percentage(const PeriodBlock& block, const Ratio& ratio) {
  return percentage(block.*ratio.numerator, block.*ratio.denominator);
}

template <Counter counter>
std::int32_t counter_of(const PeriodBlock& block) {
  return block.*counter;
}
template <std::size_t i>
std::int32_t ratio_of(const PeriodBlock& block) {
  return percentage(block, kRatios[i]);
}
template <std::size_t i>
std::int32_t further_of(const PeriodBlock& block) {
  return block.further[i];
}

/// What an order-by value ranks by within its period. Ratios are computed from the counters, not
/// taken from `percent`, which a trade cut short in "d/t/sum" does not have.
struct OrderKind {
  std::string_view name;
  std::int32_t (*figure)(const PeriodBlock&);
};
template <Counter counter>
inline constexpr OrderKind kCounterKind{counter_name(counter), counter_of<counter>};
template <std::size_t i>
inline constexpr OrderKind kRatioKind{kRatios[i].name, ratio_of<i>};
template <std::size_t i>
inline constexpr OrderKind kFurtherKind{kFurtherNames[i], further_of<i>};

/// The kinds in the order of the order-by values: "1" to "15" are those of period 60, "16" to "30"
/// those of 24, and so on. "ctg" comes before "ctt" here, although it comes after it in a block
/// (contract: kind-order).
inline constexpr std::array<OrderKind, 15> kOrderKinds{
    kCounterKind<&PeriodBlock::rin>,
    kCounterKind<&PeriodBlock::uin>,
    kCounterKind<&PeriodBlock::out>,
    kCounterKind<&PeriodBlock::clk>,
    kCounterKind<&PeriodBlock::cef>,
    kCounterKind<&PeriodBlock::ctg>,
    kCounterKind<&PeriodBlock::ctt>,
    kRatioKind<0>,
    kRatioKind<1>,
    kRatioKind<2>,
    kRatioKind<3>,
    kRatioKind<4>,
    kFurtherKind<0>,
    kFurtherKind<1>,
    kFurtherKind<2>,
};

}  // namespace toplist
