#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "toplistctl/lib/output/records.h"
#include "toplistctl/lib/site_view/site_view.h"

/// What a site holds, for people and for programs.
namespace toplist::ctl {

/// The trade database, record by record.
std::string show_trades(const SiteView& site, Format format);

/// The toplists: what the next run does with each, how many trades pass its settings now, how many
/// places (ranks) its template names and how many of them it would fill, and how many trades each
/// filter drops. A trade counts for the first filter that drops it.
std::string show_toplists(const SiteView& site, Format format);

/// Which figures are wanted, and in which order.
struct FiguresWanted {
  Period period = kPeriod24;
  std::string order_by = {};  ///< "1" to "60"; empty: as in the database
  std::size_t top = std::numeric_limits<std::size_t>::max();
};

/// A row per active trade with one period's counters, percentages and further values. Sorts the
/// site's ranking.
std::string show_figures(SiteView& site, const FiguresWanted& wanted, Format format);

}  // namespace toplist::ctl
