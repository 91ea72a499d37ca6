#include <algorithm>
#include <set>

#include "toplist/ranking.h"
#include "toplistctl/check/template_walk.h"
#include "toplistctl/json.h"
#include "toplistctl/show/show.h"
#include "toplistctl/table.h"

namespace toplist::ctl {
namespace {

/// The ranks that the template names.
std::set<std::int32_t> ranks_named(const ToplistView& toplist) {
  const SiteFile file(toplist.definition->template_path);
  std::set<std::int32_t> ranks;
  walk_template(file.text(), toplist.passing,
                {.tag =
                     [&ranks](const TagSpot& spot) {
                       if (spot.tag && !spot.from_value) ranks.insert(spot.tag->rank);
                     },
                 .stray = [](const StrayMark&) {},
                 .open_block = [](std::size_t) {}});
  return ranks;
}

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

/// Why a run builds the toplist, or does not.
std::string_view verdict(const ToplistView& toplist) {
  if (toplist.built) return "yes";
  return toplist.definition->build_mode == "1" ? "no: check value" : "no: mode";
}

std::string order_text(const std::string& order_by) {
  return is_order_value(order_by) ? order_by : order_by + " (as 16)";
}

/// Such as "group 12, rin24 3".
std::string drops_text(const ToplistView& toplist) {
  std::string text;
  for (const auto& [filter, count] : toplist.dropped) {
    text += (text.empty() ? "" : ", ") + std::string(filter) + " " + std::to_string(count);
  }
  return text;
}

std::string toplists_table(const SiteData& site) {
  Table table({{"RECORD", Table::Align::right},
               {"TEMPLATE"},
               {"PAGE"},
               {"ORDER BY", Table::Align::right},
               {"BUILT"},
               {"PASSING", Table::Align::right},
               {"PLACES", Table::Align::right},
               {"SHOWN", Table::Align::right},
               {"DROPPED BY"}});
  for (const ToplistView& toplist : site.toplists) {
    const ToplistDefinition& definition = *toplist.definition;
    const Places places = places_of(toplist);
    table.add_row({std::to_string(toplist.record), definition.template_path, definition.output_path,
                   order_text(definition.order_by), std::string(verdict(toplist)),
                   std::to_string(toplist.passing.size()), std::to_string(places.named),
                   std::to_string(places.taken), drops_text(toplist)});
  }
  return table.text();
}

Json json_of(const ToplistView& toplist) {
  const ToplistDefinition& definition = *toplist.definition;
  const Places places = places_of(toplist);
  Json dropped = Json::object();
  for (const auto& [filter, count] : toplist.dropped) dropped[std::string(filter)] = count;
  return {{"record", toplist.record},
          {"template", definition.template_path},
          {"page", definition.output_path},
          {"order_by", definition.order_by},
          {"mode", definition.build_mode},
          {"built", toplist.built},
          {"passing", toplist.passing.size()},
          {"places", places.named},
          {"shown", places.taken},
          {"dropped", dropped}};
}

}  // namespace

std::string show_toplists(const SiteData& site, Format format) {
  if (format == Format::table) return toplists_table(site);
  Json list = Json::array();
  for (const ToplistView& toplist : site.toplists) list.push_back(json_of(toplist));
  return json_text(list);
}

}  // namespace toplist::ctl
