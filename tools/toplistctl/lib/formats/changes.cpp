#include "toplistctl/lib/formats/changes.h"

#include <fmt/core.h>

#include <algorithm>

namespace toplist::ctl {

std::string TradeChange::text() const {
  if (what != What::changed) {
    return fmt::format("{} {}: {}\n", id, domain, what == What::added ? "added" : "removed");
  }
  std::string text;
  for (const ValueChange& value : values) {
    text += fmt::format("{} {}: {} {} -> {}\n", id, domain, value.name, value.before, value.after);
  }
  return text;
}

std::size_t count_of(std::span<const TradeChange> changes, TradeChange::What what) {
  return static_cast<std::size_t>(
      std::count_if(changes.begin(), changes.end(),
                    [what](const TradeChange& change) { return change.what == what; }));
}

}  // namespace toplist::ctl
