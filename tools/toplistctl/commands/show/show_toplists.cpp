#include <algorithm>
#include <set>

#include "toplist/ranking.h"
#include "toplistctl/commands/show/show.h"
#include "toplistctl/lib/templates/template_walk.h"

namespace toplist::ctl {
namespace {

/// How many places a page has for trades, and how many of them trades take.
struct Places {
  std::size_t named;
  std::size_t taken;
};

Places places_of(const ToplistView& toplist) {
  const std::set<std::int32_t> ranks = ranks_named(toplist);
  const auto is_taken = [&toplist](std::int32_t rank) {
    return static_cast<std::uint32_t>(rank) < toplist.passing.size();
  };
  return {ranks.size(),
          static_cast<std::size_t>(std::count_if(ranks.begin(), ranks.end(), is_taken))};
}

/// Whether the next run builds the toplist, or why it does not.
std::string verdict(const Prospect& next_run) {
  return next_run.is_built() ? "yes" : next_run.text();
}

std::string order_text(const std::string& order_by) {
  return is_order_value(order_by) ? order_by : order_by + " (as 16)";
}

Json drops_of(const ToplistView& toplist) {
  Json dropped = Json::object();
  for (const auto& [filter, count] : toplist.dropped) dropped[std::string(filter)] = count;
  return dropped;
}

/// What people read: the next run in one column.
std::string toplists_table(const SiteView& site) {
  Records records({"record", "template", "page", "order_by", "built", "passing", "places", "shown",
                   "dropped_by"});
  for (const ToplistView& toplist : site.toplists) {
    const ToplistDefinition& definition = *toplist.definition;
    const Places places = places_of(toplist);
    records.add({toplist.record, definition.template_path, definition.output_path,
                 order_text(definition.order_by), verdict(toplist.next_run), toplist.passing.size(),
                 places.named, places.taken, drops_of(toplist)});
  }
  return records.text(Format::table);
}

}  // namespace

std::string show_toplists(const SiteView& site, Format format) {
  if (format == Format::table) return toplists_table(site);
  Records records({"record", "template", "page", "order_by", "mode", "built", "next_run", "reason",
                   "passing", "places", "shown", "dropped"});
  for (const ToplistView& toplist : site.toplists) {
    const ToplistDefinition& definition = *toplist.definition;
    const Places places = places_of(toplist);
    records.add({toplist.record, definition.template_path, definition.output_path,
                 definition.order_by, definition.build_mode, toplist.next_run.is_built(),
                 toplist.next_run.word(), toplist.next_run.reason, toplist.passing.size(),
                 places.named, places.taken, drops_of(toplist)});
  }
  return records.text(format);
}

}  // namespace toplist::ctl
