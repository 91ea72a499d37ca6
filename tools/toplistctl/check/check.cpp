#include "toplistctl/check/check.h"

#include <system_error>

#include "toplistctl/check/kinds.h"

namespace toplist::ctl {
namespace {

using Check = void (*)(const SiteView&, Findings&);

constexpr Check kChecks[] = {
    check_trades, check_configuration, check_harvested_trades, check_columns,   check_histories,
    check_sum,    check_definitions,   check_settings,         check_templates, check_sources,
};

}  // namespace

std::string cannot_open(int error) {
  return "cannot be opened: " + std::generic_category().message(error);
}

bool check_open(const SiteFile& file, Findings& findings) {
  if (file.is_open()) return true;
  findings.push_back({&kinds::kMissingFile, file.path(), {}, cannot_open(file.error())});
  return false;
}

Findings check_site(const SiteView& site, std::string_view program_path) {
  Findings findings;
  for (const Check check : kChecks) check(site, findings);
  check_programs(site, program_path, findings);
  return findings;
}

}  // namespace toplist::ctl
