#include "toplistctl/lib/new_site/empty_site.h"

#include "toplistctl/lib/new_site/own_folder.h"
#include "toplistctl/lib/new_site/site_folder.h"
#include "toplistctl/lib/new_site/site_texts.h"

namespace toplist::site {

std::string write_empty_site(const std::filesystem::path& directory) {
  if (std::string problem = why_not_new(directory); !problem.empty()) return problem;
  SiteTexts texts;
  add_folder(texts, "empty");
  install_templates(texts);
  SiteFolder site(directory);
  for (const char* folder : kSiteFolders) site.make_folder(folder);
  site.write(texts);
  return site.problem();
}

}  // namespace toplist::site
