#pragma once

#include <cstddef>
#include <vector>

#include "toplistctl/lib/diagnostics/diagnostic.h"

namespace toplist::ctl {

/// Which findings are wanted.
struct Wanted {
  Effect min_effect = Effect::lose;       ///< the least grave
  std::vector<const Kind*> ignored = {};  ///< not these, which are meant so
};

/// What is told of a site.
struct Selection {
  Diagnostics findings;
  std::size_t less_grave = 0;  ///< how many more there are, less grave than wanted
};

/// Leaves out what is not wanted, and what is there only because of another finding that is.
Selection select(Diagnostics all, const Wanted& wanted);

}  // namespace toplist::ctl
