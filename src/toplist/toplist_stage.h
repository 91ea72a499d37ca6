#pragma once

#include <vector>

#include "run/outcomes.h"
#include "run/run_state.h"
#include "toplist/filters.h"

namespace toplist {

/// Builds one toplist, if its build mode and check value let it: ranks the rows, from the order
/// of the last ranking, filters them and writes the page. False if no further toplist may be
/// built. Throws StrayMark as render_toplist() does.
bool build_toplist(RunState& run, const ToplistDefinition& definition, Outcomes& outcomes);

/// The toplist's filters. Reports groups that cannot be opened.
ToplistFilters read_filters(const ToplistDefinition& definition,
                            const std::vector<ToplistSetting>& settings, Outcomes& outcomes);

/// The rows that the filters admit, in rank order, up to the last one that a tag can name.
std::vector<const TradeRow*> admitted_rows(const std::vector<TradeRow*>& ranking,
                                           const ToplistFilters& filters);

}  // namespace toplist
