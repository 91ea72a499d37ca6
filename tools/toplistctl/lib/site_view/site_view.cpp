#include "toplistctl/lib/site_view/site_view.h"

#include <algorithm>
#include <utility>

namespace toplist::ctl {

SiteView::SiteView(std::span<const Step> steps, TakePage take_page)
    : rehearsal(run, std::move(take_page)) {
  for (const Step step : steps) rehearsal.carry_out(step);
  for (const ToplistDefinition& definition : run.definitions) {
    toplists.push_back(rehearsal.build(definition));
  }
}

const ToplistView* SiteView::find(std::string_view name, std::size_t record) const {
  const auto found = std::ranges::find_if(toplists, [&](const ToplistView& toplist) {
    return (record == 0 || record == toplist.record) && toplist.is_called(name);
  });
  return found == toplists.end() ? nullptr : &*found;
}

}  // namespace toplist::ctl
