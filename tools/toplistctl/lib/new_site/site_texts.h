#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace toplist::site {

/// Files to be laid out: path below the site's root -> contents.
using SiteTexts = std::map<std::string, std::string, std::less<>>;

/// The contents of a file of site/ that must be there, e.g. "partners.txt".
std::string_view embedded_text(std::string_view path);

/// Adds what lies below a folder of site/, in place of what has the same path.
void add_folder(SiteTexts& texts, std::string_view folder);

/// Adds the template of each source, expanded, and writes its check value into the definitions.
void install_templates(SiteTexts& texts);

}  // namespace toplist::site
