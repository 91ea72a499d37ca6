#include "toplistctl/commands/check/check.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <system_error>

#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/site_view/site_view.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

using Check = void (*)(const SiteView&, Diagnostics&);

constexpr Check kChecks[] = {
    check_is_site,      check_trades,    check_configuration, check_harvested_trades,
    check_columns,      check_histories, check_sum,           check_definitions,
    check_pages,        check_settings,  check_templates,     check_sources,
    check_unused_files,
};

}  // namespace

std::string cannot_open(int error) {
  return "cannot be opened: " + std::generic_category().message(error);
}

bool check_open(const SiteFile& file, Diagnostics& findings) {
  if (file.is_open()) return true;
  findings.push_back({&kinds::kMissingFile, {.file = file.path()}, cannot_open(file.error())});
  return false;
}

void check_none_has(const Kind& kind, const std::string& file, std::size_t lacking,
                    const SiteView& site, Diagnostics& findings) {
  const std::size_t active = site.run.rows.size();
  if (lacking < active || active < 2) return;
  findings.push_back(
      {&kind, {.file = file}, "has nothing of the " + grouped(active) + " active trades"});
}

bool holds_markup(std::string_view text) {
  for (std::size_t at = text.find('<'); at < text.size(); at = text.find('<', at + 1)) {
    const std::string_view next = text.substr(at + 1, 1);
    if (next.empty()) return false;
    if (std::isalpha(static_cast<unsigned char>(next[0])) != 0 || contains("/!?", next))
      return true;
  }
  return false;
}

void check_is_site(const SiteView& /*site*/, Diagnostics& findings) {
  const bool is_none = std::all_of(kNeededFiles.begin(), kNeededFiles.end(), [](const char* path) {
    return ::access(path, F_OK) != 0 && errno == ENOENT;
  });
  if (!is_none) return;
  findings.push_back({&kinds::kNoSite, {.file = "."}, "has none of the files that a run needs"});
}

Diagnostics check_site(const SiteView& site, std::string_view program_path) {
  Diagnostics findings;
  for (const Check check : kChecks) check(site, findings);
  check_programs(site, program_path, findings);
  return findings;
}

}  // namespace toplist::ctl
