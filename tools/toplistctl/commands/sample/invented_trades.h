#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "run/trade_row.h"
#include "toplistctl/commands/sample/partners.h"
#include "toplistctl/commands/sample/random.h"

namespace toplist::site {

/// A partner as a trade of a sample site.
struct Trade {
  std::int32_t id;
  std::int32_t status;  ///< about one in sixteen is not active
  const Partner* partner;
  std::string domain;
  double daily_visitors;
};

std::vector<Trade> invent_trades(std::size_t count, Random& random);

/// Figures of a trade that suit each other.
struct Figures {
  std::array<PeriodBlock, 3> recent;  ///< 60, 24 and 07
  std::vector<PeriodBlock> days;      ///< of the history
};

Figures invent_figures(const Trade& trade, Random& random);

}  // namespace toplist::site
