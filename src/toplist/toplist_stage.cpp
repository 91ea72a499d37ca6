#include "toplist/toplist_stage.h"

#include <string>

#include "render/render.h"
#include "toplist/ranking.h"

namespace toplist {

bool build_toplist(RunState& run, const ToplistDefinition& definition, Outcomes& outcomes) {
  if (!may_be_built(definition)) return true;
  rank_rows(run.rows, definition.order_by, run.ranking);
  const ToplistFilters filters = read_filters(definition, run.settings, outcomes);
  return render_toplist(definition.template_path, definition.output_path,
                        admitted_rows(run.ranking, filters), outcomes);
}

ToplistFilters read_filters(const ToplistDefinition& definition,
                            const std::vector<ToplistSetting>& settings, Outcomes& outcomes) {
  ToplistFilters filters = filters_of(definition.template_path, settings);
  for (const std::string& group : filters.unopened_groups()) {
    outcomes.log(unopened_file(group, Severity::run_goes_on));
  }
  return filters;
}

std::vector<const TradeRow*> admitted_rows(const std::vector<TradeRow*>& ranking,
                                           const ToplistFilters& filters) {
  std::vector<const TradeRow*> admitted;
  for (const TradeRow* row : ranking) {
    if (admitted.size() == kRankCount) break;
    if (filters.admit(*row)) admitted.push_back(row);
  }
  return admitted;
}

}  // namespace toplist
