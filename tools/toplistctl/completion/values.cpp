#include "toplistctl/completion/values.h"

#include <algorithm>
#include <iterator>

#include "run/trade_record.h"
#include "toplist/definitions.h"
#include "toplistctl/check/finding.h"
#include "toplistctl/check/kinds.h"
#include "toplistctl/site_view/order_names.h"
#include "toplistctl/site_view/site_file.h"

namespace toplist::ctl {
namespace {

std::vector<std::string> templates() {
  std::vector<std::string> names;
  const SiteFile definitions(kDefinitionsPath);
  for (const ToplistDefinition& toplist : parse_definitions(definitions.text())) {
    names.push_back(toplist.template_path.substr(kTemplateFolder.size()));
  }
  return names;
}

std::vector<std::string> domains() {
  std::vector<TradeRecord> trades;
  load_trades(kTradesPath, trades);  // none when it cannot be opened
  std::vector<std::string> names;
  for (const TradeRecord& trade : trades) names.emplace_back(domain_of(trade));
  return names;
}

std::vector<std::string> effects() {
  std::vector<std::string> names;
  for (const EffectName& effect : kEffects) names.emplace_back(effect.word);
  return names;
}

std::vector<std::string> finding_kinds() {
  std::vector<std::string> names;
  for (const Kind* kind : kinds::kAll) names.emplace_back(kind->name);
  return names;
}

constexpr ValueType kValueTypes[] = {
    {"DIR", "directory", nullptr}, {"FILE", "file", nullptr},      {"FOLDER", "directory", nullptr},
    {"EFFECT", "", effects},       {"KIND", "", finding_kinds},    {"KEY", "", order_value_names},
    {"NAME", "user", nullptr},     {"SITE", "directory", nullptr}, {"TEMPLATE", "", templates},
    {"TRADE", "", domains},
};

}  // namespace

const ValueType* value_type_named(std::string_view name) {
  const auto* const at = std::find_if(std::begin(kValueTypes), std::end(kValueTypes),
                                      [name](const ValueType& type) { return type.name == name; });
  return at == std::end(kValueTypes) ? nullptr : at;
}

}  // namespace toplist::ctl
