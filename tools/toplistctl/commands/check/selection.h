#pragma once

#include <cstddef>
#include <vector>

#include "toplistctl/lib/diagnostics/diagnostic.h"

namespace toplist::ctl {

/// Which findings are reported.
struct Wanted {
  Effect min_effect = Effect::lose;       ///< the least serious
  std::vector<const Kind*> ignored = {};  ///< not of these kinds
};

/// The findings that are reported.
struct Selection {
  Diagnostics findings;
  std::size_t hidden = 0;  ///< how many more there are, less serious than wanted
};

/// Leaves out findings that are not wanted, and those that another reported finding causes. The
/// most serious ones come first.
Selection select(Diagnostics all, const Wanted& wanted);

}  // namespace toplist::ctl
