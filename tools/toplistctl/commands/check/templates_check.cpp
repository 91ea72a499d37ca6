#include <set>
#include <string>

#include "toplistctl/commands/check/check.h"
#include "toplistctl/lib/site_files/site_file.h"
#include "toplistctl/lib/templates/template_check.h"

namespace toplist::ctl {

void check_templates(const SiteView& site, Diagnostics& findings) {
  std::set<std::string> done;
  for (const ToplistView& toplist : site.toplists) {
    const std::string& path = toplist.definition->template_path;
    if (!done.insert(path).second) continue;
    const SiteFile file(path);
    if (!file.is_open()) continue;
    const PlaceOf place_of = [&path](std::size_t line, std::size_t column) {
      return Place{.file = path, .line = line, .column = column};
    };
    check_template(file.text(), use_in(site, toplist), place_of, findings);
  }
}

}  // namespace toplist::ctl
