#pragma once

#include <array>
#include <string>
#include <vector>

#include "run/run_state.h"
#include "run/statistics.h"

/// The files that a run reads, by their paths as it opens them.
namespace toplist::ctl {

/// Those that every run needs.
inline constexpr std::array kNeededFiles{kTradesPath, kHarvestConfigPath, kExtraColumnsPath,
                                         kSumPath,    kDefinitionsPath,   kSettingsPath};

/// Those that it reads when it builds the toplist: the template and the groups of its settings.
std::vector<std::string> toplist_inputs(const ToplistDefinition& definition,
                                        const std::vector<ToplistSetting>& settings);

}  // namespace toplist::ctl
