#include "harvest/harvest_config.h"

#include <cstdint>

#include "util/fields.h"
#include "util/number.h"

namespace toplist {

bool HarvestConfig::harvest_enabled() const {
  const std::int32_t value = parse_int32(line(kHarvest));
  return value >= 1 && value <= 24;
}

HarvestConfig parse_harvest_config(std::string_view text, std::string_view padding) {
  HarvestConfig config;
  FieldReader lines(text, kLineSeparator);
  for (std::string_view line; lines.next(line);) config.lines.emplace_back(line);
  while (config.lines.size() < HarvestConfig::kLineCount) config.lines.emplace_back(padding);
  return config;
}

}  // namespace toplist
