#include "toplistctl/lib/templates/places.h"

#include "toplistctl/lib/site_files/site_file.h"
#include "toplistctl/lib/templates/template_walk.h"

namespace toplist::ctl {

std::set<std::int32_t> ranks_named(const ToplistView& toplist) {
  const SiteFile file(toplist.definition->template_path);
  std::set<std::int32_t> ranks;
  walk_template(file.text(), toplist.passing,
                {.tag =
                     [&ranks](const TagSpot& spot) {
                       if (spot.tag && !spot.from_value) ranks.insert(spot.tag->rank);
                     },
                 .stray = [](const StraySpot&) {},
                 .open_block = [](std::size_t) {}});
  return ranks;
}

}  // namespace toplist::ctl
