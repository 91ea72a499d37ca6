#include "toplistctl/commands/sample/invented_trades.h"

#include <cmath>
#include <numeric>
#include <utility>

namespace toplist::site {
namespace {

constexpr std::int32_t kFirstTradeId = 101;
constexpr std::size_t kHistoryDays = 30;
/// Visitors per day that the best trade of a site sends, and how fast the others fall behind it.
constexpr double kBestDay = 4200.0;
constexpr double kFallOff = 0.55;

std::int32_t whole(double number) { return static_cast<std::int32_t>(std::lround(number)); }

/// The places that the trades take among each other, in a random order: trade -> place.
std::vector<std::size_t> draw_places(std::size_t count, Random& random) {
  std::vector<std::size_t> places(count);
  std::iota(places.begin(), places.end(), 0);
  for (std::size_t i = count; i > 1; --i) std::swap(places[i - 1], places[random.below(i)]);
  return places;
}

std::int32_t status_of(std::size_t index) {
  if (index % 16 != 15) return 1;
  return index % 32 == 15 ? 0 : 2;
}

/// Habits of a trade's visitors; they hold over all periods.
struct Habits {
  double unique, returned, clicks, clicked_out, traded;
};

Habits draw_habits(Random& random) {
  return {.unique = random.between(0.6, 0.95),
          .returned = random.between(0.6, 1.4),
          .clicks = random.between(0.1, 0.9),
          .clicked_out = random.between(0.2, 0.6),
          .traded = random.between(0.1, 0.5)};
}

PeriodBlock draw_period(double visitors, const Habits& habits, Random& random) {
  const auto count = [&](double share) {
    return whole(visitors * share * random.between(0.9, 1.1));
  };
  PeriodBlock block;
  block.rin = whole(visitors * random.between(0.8, 1.2));
  block.uin = whole(block.rin * habits.unique);
  block.out = count(habits.returned);
  block.clk = count(habits.clicks);
  block.cef = count(habits.unique * habits.clicked_out);
  block.ctt = count(habits.returned * habits.traded);
  block.ctg = count(habits.traded);
  block.rec = count(habits.clicks * habits.traded);
  for (std::int32_t& value : block.further) value = count(random.unit());
  return block;
}

}  // namespace

std::vector<Trade> invent_trades(std::size_t count, Random& random) {
  const std::vector<std::size_t> places = draw_places(count, random);
  std::vector<Trade> trades;
  trades.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const double place = static_cast<double>(places[i]) + 1.0;
    trades.push_back({kFirstTradeId + static_cast<std::int32_t>(i), status_of(i), &partner_of(i),
                      partner_domain(i),
                      kBestDay * std::pow(place, -kFallOff) * random.between(0.85, 1.15)});
  }
  return trades;
}

Figures invent_figures(const Trade& trade, Random& random) {
  const Habits habits = draw_habits(random);
  const double day = trade.daily_visitors;
  Figures figures{{draw_period(day / 24, habits, random), draw_period(day, habits, random),
                   draw_period(day * 7, habits, random)},
                  {}};
  figures.days.reserve(kHistoryDays);
  while (figures.days.size() < kHistoryDays) {
    figures.days.push_back(draw_period(day, habits, random));
  }
  return figures;
}

}  // namespace toplist::site
