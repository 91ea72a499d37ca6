#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toplistctl/lib/diagnostics/error.h"
#include "toplistctl/lib/site_view/site_view.h"

/// Where a trade is shown, and what keeps it from being shown.
namespace toplist::ctl {

/// Drop::filter of a trade that is not active.
inline constexpr std::string_view kInactiveFilter = "inactive";

/// What a test says of a trade that it drops, such as "rin24 is 7, below 10".
std::string reason_text(const Drop& drop);

/// One trade in one toplist.
struct Standing {
  const ToplistView* toplist;
  std::optional<std::int32_t> figure = {};  ///< that it ranks by; none if the trade is not active
  std::optional<std::size_t> rank = {};     ///< from 0; none if something drops the trade
  bool has_place = false;                   ///< the template names this rank
  const TradeRow* above = nullptr;          ///< the trade one rank better, if any
  const TradeRow* below = nullptr;          ///< the trade one rank worse, if any
  std::vector<Drop> drops = {};             ///< all that drops it, in the order of the tests

  /// Whether the page shows it after the next run.
  [[nodiscard]] bool is_shown() const { return has_place && toplist->next_run.is_built(); }
};

/// What the site's files hold of one trade.
struct TradeFiles {
  std::size_t sum_record = 0;  ///< of its figures, from 1: the last one of its number; 0: none
  bool history = false;        ///< can be read
  std::size_t columns = 0;     ///< values in all its lines
  bool thumbnail = false;      ///< is in the folder
};

/// One trade, in the site's files and in each toplist.
struct TradeStanding {
  std::size_t record;  ///< in the database, from 1
  const TradeRecord* trade;
  const TradeRow* row;  ///< nullptr when it is not active
  TradeFiles files;
  std::vector<Standing> toplists;

  /// Whether every one of these toplists shows the trade.
  [[nodiscard]] bool is_shown_everywhere() const;
};

/// All trades of this number or domain, in the order of the database. `toplist`, if not empty,
/// restricts them to toplists of this template or page. An error if "d/t/sum" cannot be read.
Expected<std::vector<TradeStanding>> standings_of(const SiteView& site, std::string_view trade,
                                                  std::string_view toplist);

}  // namespace toplist::ctl
