#include <algorithm>
#include <set>
#include <string>

#include "toplistctl/commands/check/check.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/templates/check_values.h"
#include "toplistctl/lib/templates/source.h"
#include "toplistctl/lib/templates/template_check.h"
#include "util/fields.h"

namespace toplist::ctl {
namespace {

/// The place in the sources of the first byte that differs from the template.
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

void check_source(const std::string& source, const std::string& path, std::string_view text,
                  Diagnostics& findings) {
  const Expansion expansion = expand_source(source, read_file);
  if (!expansion.errors.empty()) {
    findings.push_back(expansion.errors.front());
  } else if (expansion.text != text) {
    add(findings, kinds::kSourceDiffers, first_difference(expansion, text),
        "{} differs from here on", path);
  }
}

}  // namespace

void check_templates(const SiteView& site, Diagnostics& findings) {
  std::set<std::string> done;
  for (const ToplistView& toplist : site.toplists) {
    const std::string& path = toplist.definition->template_path;
    if (!done.insert(path).second) continue;
    Diagnostics reported_with_the_definition;
    const auto text = read_input(path, kinds::kMissingTemplate, reported_with_the_definition);
    if (!text) continue;
    findings.insert(findings.end(), reported_with_the_definition.begin(),
                    reported_with_the_definition.end());
    const PlaceOf place = [&path](std::size_t line, std::size_t column) {
      return Place{.file = path, .line = line, .column = column};
    };
    check_template(*text, use_in(site, toplist), place, findings);
  }
}

std::vector<std::string> find_sources() { return files_in(kTemplateFolder, kSourceSuffix); }

void check_sources(const SiteView& /*site*/, Diagnostics& findings) {
  for (const std::string& source : find_sources()) {
    const auto name = template_name_of(source);
    if (!name) continue;
    const std::string path = std::string(kTemplateFolder) + *name;
    Diagnostics reported_elsewhere;
    const auto text = read_input(path, kinds::kMissingTemplate, reported_elsewhere);
    if (text) check_source(source, path, *text, findings);
  }
}

}  // namespace toplist::ctl
