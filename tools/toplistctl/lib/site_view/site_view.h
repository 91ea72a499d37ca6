#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "run/steps.h"
#include "toplist/filters.h"
#include "toplistctl/lib/site_view/prospect.h"
#include "toplistctl/lib/site_view/rehearsal.h"

namespace toplist::ctl {

/// One toplist as a run would build it now.
struct ToplistView {
  const ToplistDefinition* definition;
  std::size_t record;  ///< in "d/tl/tl", from 1
  Prospect next_run;   ///< what becomes of it then
  bool allowed;        ///< its mode and check value let it be built, if the run comes to it
  ToplistFilters filters;
  std::vector<const TradeRow*> ranking;  ///< all rows in the toplist's order
  std::vector<const TradeRow*> passing;  ///< those that no filter drops; in rank order
  /// How many trades each filter drops, by setting key or kThumbnailFilter. A trade counts for the
  /// first filter that drops it.
  std::map<std::string_view, std::size_t> dropped;

  /// Whether `name` is its template, with or without its folder, or its page.
  [[nodiscard]] bool is_called(std::string_view name) const;
};

/// What a run knows of the site in the working directory and what the next one would do, found out
/// by the run's own steps. Nothing is written.
struct SiteView {
  /// Carries out some of a run's steps; all of them by default. Where a run would end, this goes on
  /// with what there is. `take_page` gets the pages that the run would write, in its order, until
  /// it ends.
  explicit SiteView(std::span<const Step> steps = kSteps, TakePage take_page = {});

  RunState run;
  Rehearsal rehearsal;

  /// Of all definitions that the steps have read, also of those that a run skips or does not come
  /// to. Each ranking starts from the one that a run leaves before it.
  std::vector<ToplistView> toplists;

  /// The first toplist that is called so, or the one of this record if it is; nullptr when there is
  /// none. Record 0 stands for any.
  [[nodiscard]] const ToplistView* find(std::string_view name, std::size_t record = 0) const;

 private:
  [[nodiscard]] ToplistView look_at(const ToplistDefinition& definition);
};

}  // namespace toplist::ctl
