#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "run/steps.h"
#include "toplistctl/lib/site_view/rehearsal.h"

namespace toplist::ctl {

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
};

}  // namespace toplist::ctl
