#include "toplistctl/lib/command_line/values.h"

#include <algorithm>
#include <iterator>

#include "run/trade_record.h"
#include "toplist/definitions.h"
#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/formats/order_names.h"
#include "toplistctl/lib/site_files/site_file.h"

namespace toplist::ctl {
namespace {

/// What `name` tells of each, in their order.
template <typename Range, typename Name>
std::vector<std::string> names_of(const Range& range, const Name& name) {
  std::vector<std::string> names(std::size(range));
  std::transform(std::begin(range), std::end(range), names.begin(), name);
  return names;
}

std::vector<std::string> templates() {
  const SiteFile definitions(kDefinitionsPath);
  return names_of(parse_definitions(definitions.text()), [](const ToplistDefinition& toplist) {
    return toplist.template_path.substr(kTemplateFolder.size());
  });
}

std::vector<std::string> domains() {
  std::vector<TradeRecord> trades;
  load_trades(kTradesPath, trades);  // none when it cannot be opened
  return names_of(trades, domain_of);
}

std::vector<std::string> effects() {
  return names_of(kEffects, [](const EffectName& effect) { return effect.word; });
}

std::vector<std::string> finding_kinds() {
  return names_of(kinds::all(), [](const Kind* kind) { return kind->name; });
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
