#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "toplist/definitions.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/templates/check_values.h"
#include "toplistctl/lib/templates/source.h"
#include "util/fields.h"

namespace toplist::ctl {
namespace {

/// Where in the sources the first byte comes from that the template has not.
Place first_difference(const Expansion& expansion, std::string_view text) {
  const std::string_view expected = expansion.text;
  const auto difference =
      std::mismatch(expected.begin(), expected.end(), text.begin(), text.end()).first;
  const auto line = std::count(expected.begin(), difference, kLineSeparator);
  const std::string_view same =
      expected.substr(0, static_cast<std::size_t>(difference - expected.begin()));
  return expansion.place_of(static_cast<std::size_t>(line) + 1,
                            same.size() - (same.rfind(kLineSeparator) + 1) + 1);
}

void check_source(const std::string& source, const SiteFile& file, Diagnostics& findings) {
  const Expansion expansion = expand_source(source, read_file);
  Diagnostic fault{&kinds::kSourceDiffers, {}, {}};
  if (!expansion.errors.empty()) {
    fault.place = expansion.errors.front().place;
    fault.message = expansion.errors.front().message;
  } else if (expansion.text != file.text()) {
    fault.place = first_difference(expansion, file.text());
    fault.message = file.path() + " differs from here on";
  } else {
    return;
  }
  findings.push_back(std::move(fault));
}

}  // namespace

std::vector<std::string> find_sources() { return files_in(kTemplateFolder, kSourceSuffix); }

void check_sources(const SiteView& /*site*/, Diagnostics& findings) {
  for (const std::string& source : find_sources()) {
    const auto name = template_name_of(source);
    if (!name) continue;
    const SiteFile file(std::string(kTemplateFolder) + *name);
    if (file.is_open()) check_source(source, file, findings);
  }
}

}  // namespace toplist::ctl
