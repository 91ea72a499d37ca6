#include "toplistctl/commands/why/report.h"

#include <iterator>

#include "run/statistics.h"
#include "toplist/ranking.h"
#include "toplistctl/lib/formats/order_names.h"
#include "toplistctl/lib/output/json.h"
#include "toplistctl/lib/output/printable.h"

namespace toplist::ctl {
namespace {

// --- for people ---

/// What a drop by another filter than a minimum means.
struct Meaning {
  std::string_view filter;
  const char* text;
};
constexpr Meaning kMeanings[] = {
    {kInactiveFilter, "the trade is not active"},
    {kDomainsKey, "the setting \"domains\" does not name its domain"},
    {kGroupKey, "the setting \"group\" names a group without it"},
    {kThumbnailFilter, "it has no thumbnail, which is required"},
    {kSkippedDomainsKey, "the setting \"skipdomains\" names its domain"},
};

std::string reason_text(const Drop& drop) {
  for (const Meaning& meaning : kMeanings) {
    if (drop.filter == meaning.filter) return meaning.text;
  }
  return std::string(drop.filter) + " is " + std::to_string(drop.figure) + ", below " +
         std::to_string(drop.minimum);
}

std::string record_text(const char* file, std::size_t record) {
  if (record == 0) return std::string("no record in ") + file;
  return "record " + std::to_string(record) + " of " + file;
}

void append_files(std::string& text, const SiteView& site, const Account& account) {
  const TradeFiles& files = account.files;
  const std::string domain(domain_of(*account.trade));
  const auto add = [&text](const char* name, const std::string& value) {
    text += name + printable(value) + "\n";
  };
  add("  address    ", std::string(url_of(*account.trade)));
  add("  database   ",
      record_text(kTradesPath, account.record) +
          (is_active(*account.trade) ? ", active" : ", not active: status ") +
          (is_active(*account.trade) ? "" : std::to_string(account.trade->status)));
  add("  figures    ", record_text(kSumPath, files.sum_record));
  add("  history    ", (files.history ? "" : "no ") + history_path(domain));
  add("  columns    ", std::to_string(files.columns) + " in " + kExtraColumnsPath);
  add("  thumbnail  ", (files.thumbnail ? "" : "no ") + site.run.config.thumb_dir() + domain +
                           ".jpg" + (site.run.config.thumbnails_required() ? ", required" : ""));
}

std::string name_of(const TradeRow& row) { return row.id + " " + row.domain; }

std::string neighbour_text(const char* where, const TradeRow* row, const Standing& standing) {
  const std::string place = std::string("  ") + where + ": ";
  if (row == nullptr) return place + "none";
  const std::int32_t figure = order_figure(*row, standing.toplist->definition->order_by);
  return place + name_of(*row) + " with " + std::to_string(figure);
}

std::string rank_text(const Standing& standing) {
  return "  rank " + std::to_string(*standing.rank) + ", number " +
         std::to_string(*standing.rank + 1) + " of " +
         std::to_string(standing.toplist->passing.size()) + ", with " +
         order_value_name(standing.toplist->definition->order_by) + " " +
         std::to_string(*standing.figure) +
         (standing.has_place ? "" : ", but the template has no such place");
}

void append_standing(std::string& text, const Standing& standing) {
  const ToplistDefinition& definition = *standing.toplist->definition;
  const auto add = [&text](const std::string& line) { text += printable(line) + "\n"; };
  add(definition.output_path + " (record " + std::to_string(standing.toplist->record) + ", " +
      definition.template_path + ")");
  if (standing.rank) {
    add(rank_text(standing));
    add(neighbour_text("above", standing.above, standing));
    add(neighbour_text("below", standing.below, standing));
  }
  for (const Drop& drop : standing.drops) add("  not shown: " + reason_text(drop));
  const Prospect& next_run = standing.toplist->next_run;
  if (!next_run.is_built()) add("  page stays as it is: " + next_run.text());
}

// --- for programs ---

template <typename Number>
Json number_or_null(const std::optional<Number>& number) {
  return number ? Json(*number) : Json();
}

Json json_of(const Drop& drop) {
  const bool is_minimum = is_minimum_key(drop.filter);
  return {{"filter", drop.filter},
          {"figure", is_minimum ? Json(drop.figure) : Json()},
          {"minimum", is_minimum ? Json(drop.minimum) : Json()}};
}

Json json_of(const Standing& standing) {
  const ToplistDefinition& definition = *standing.toplist->definition;
  Json reasons = Json::array();
  for (const Drop& drop : standing.drops) reasons.push_back(json_of(drop));
  return {{"record", standing.toplist->record},
          {"template", definition.template_path},
          {"page", definition.output_path},
          {"built", standing.toplist->next_run.is_built()},
          {"rank", number_or_null(standing.rank)},
          {"place", standing.has_place},
          {"figure", number_or_null(standing.figure)},
          {"reasons", reasons}};
}

Json json_of(const Account& account) {
  Json toplists = Json::array();
  for (const Standing& standing : account.toplists) toplists.push_back(json_of(standing));
  return {{"id", account.trade->trade_id},
          {"domain", domain_of(*account.trade)},
          {"active", is_active(*account.trade)},
          {"toplists", toplists}};
}

}  // namespace

std::string why_text(const SiteView& site, std::span<const Account> accounts) {
  std::string text;
  for (const Account& account : accounts) {
    if (!text.empty()) text += '\n';
    text += printable(std::to_string(account.trade->trade_id) + " " +
                      std::string(domain_of(*account.trade))) +
            "\n";
    append_files(text, site, account);
    for (const Standing& standing : account.toplists) append_standing(text += '\n', standing);
  }
  return text;
}

std::string why_json(std::span<const Account> accounts) {
  if (accounts.size() == 1) return json_text(json_of(accounts.front()));
  Json list = Json::array();
  for (const Account& account : accounts) list.push_back(json_of(account));
  return json_text(list);
}

}  // namespace toplist::ctl
