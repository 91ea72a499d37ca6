#pragma once

#include <cstdint>
#include <set>

#include "toplistctl/lib/site_view/site_view.h"

namespace toplist::ctl {

/// The ranks that the toplist's template names: its places for trades. Those in tags that a value
/// brings in do not count. Empty when the template cannot be opened.
std::set<std::int32_t> ranks_named(const ToplistView& toplist);

}  // namespace toplist::ctl
