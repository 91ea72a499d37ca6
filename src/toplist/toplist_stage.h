#pragma once

#include <vector>

#include "run/outcomes.h"
#include "run/run_state.h"
#include "toplist/filters.h"

namespace toplist {

/// Builds one toplist, if its build mode and check value let it: ranks the rows, from the order
/// that the last ranking left, filters them and writes the page. False when no further toplist is
/// to be built. Throws StrayMark as render_toplist() does.
bool build_toplist(RunState& run, const ToplistDefinition& definition, Outcomes& outcomes);

/// The toplist's filters; groups that cannot be opened are told.
ToplistFilters read_filters(const ToplistDefinition& definition,
                            const std::vector<ToplistSetting>& settings, Outcomes& outcomes);

/// The rows that the filters admit, in rank order, up to the last one that a tag can name.
std::vector<const TradeRow*> admitted_rows(const std::vector<TradeRow*>& ranking,
                                           const ToplistFilters& filters);

}  // namespace toplist
