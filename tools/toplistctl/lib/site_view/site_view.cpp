#include "toplistctl/lib/site_view/site_view.h"

#include <algorithm>
#include <utility>

#include "toplist/ranking.h"

namespace toplist::ctl {
namespace {

void fill_in_drops(ToplistView& view) {
  for (const TradeRow* row : view.ranking) {
    const std::string_view filter = view.filters.dropped_by(*row);
    if (filter.empty()) {
      view.passing.push_back(row);
    } else {
      ++view.dropped[filter];
    }
  }
}

}  // namespace

bool ToplistView::is_called(std::string_view name) const {
  const std::string_view path = definition->template_path;
  return name == path || name == path.substr(kTemplateFolder.size()) ||
         name == definition->output_path;
}

SiteView::SiteView(std::span<const Step> steps, TakePage take_page)
    : rehearsal(run, std::move(take_page)) {
  for (const Step step : steps) rehearsal.carry_out(step);
  for (const ToplistDefinition& definition : run.definitions) {
    toplists.push_back(look_at(definition));
  }
}

ToplistView SiteView::look_at(const ToplistDefinition& definition) {
  std::vector<TradeRow*> own = run.ranking;
  rank_rows(run.rows, definition.order_by, own);
  ToplistView view{.definition = &definition,
                   .record = toplists.size() + 1,
                   .next_run = rehearsal.build(definition),
                   .allowed = may_be_built(definition),
                   .filters = filters_of(definition.template_path, run.settings),
                   .ranking = {own.begin(), own.end()},
                   .passing = {},
                   .dropped = {}};
  fill_in_drops(view);
  // Also where the run has ended: so the toplists behind are as they will be once it does not.
  if (view.allowed) run.ranking = std::move(own);
  return view;
}

const ToplistView* SiteView::find(std::string_view name, std::size_t record) const {
  const auto found =
      std::find_if(toplists.begin(), toplists.end(), [&](const ToplistView& toplist) {
        return (record == 0 || record == toplist.record) && toplist.is_called(name);
      });
  return found == toplists.end() ? nullptr : &*found;
}

}  // namespace toplist::ctl
