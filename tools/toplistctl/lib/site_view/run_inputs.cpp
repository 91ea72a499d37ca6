#include "toplistctl/lib/site_view/run_inputs.h"

#include <utility>

#include "toplist/filters.h"

namespace toplist::ctl {

std::vector<std::string> toplist_inputs(const ToplistDefinition& definition,
                                        const std::vector<ToplistSetting>& settings) {
  std::vector<std::string> inputs = {definition.template_path};
  const std::string template_name = definition.template_path.substr(kTemplateFolder.size());
  for (const ToplistSetting& setting : settings) {
    if (setting.key != kGroupKey || setting.template_name != template_name) continue;
    if (auto path = group_path(setting.value)) inputs.push_back(std::move(*path));
  }
  return inputs;
}

}  // namespace toplist::ctl
