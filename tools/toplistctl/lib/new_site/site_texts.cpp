#include "toplistctl/lib/new_site/site_texts.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "toplist/definitions.h"
#include "toplistctl/lib/new_site/embedded_files.h"
#include "toplistctl/lib/templates/check_values.h"
#include "toplistctl/lib/templates/source.h"

namespace toplist::site {
namespace {

std::vector<std::string> source_paths(const SiteTexts& texts) {
  std::vector<std::string> paths;
  for (const auto& [path, text] : texts) {
    if (path.starts_with(kTemplateFolder) && path.ends_with(ctl::kSourceSuffix)) {
      paths.push_back(path);
    }
  }
  return paths;
}

std::string expand(const std::string& source, const SiteTexts& texts) {
  auto expansion =
      ctl::expand_source(source, [&texts](const std::string& path) -> ctl::Expected<std::string> {
        const auto found = texts.find(path);
        if (found == texts.end()) return ctl::failure("cannot open " + path);
        return found->second;
      });
  // Not the user's doing: the sources are our own.
  if (!expansion.errors.empty()) throw std::logic_error(expansion.errors.front().message);
  return std::move(expansion.text);
}

}  // namespace

std::string_view embedded_text(std::string_view path) {
  const auto files = embedded_files();
  const auto found = std::ranges::find(files, path, &EmbeddedFile::path);
  if (found == files.end()) throw std::logic_error("not embedded: " + std::string(path));
  return found->bytes();
}

void add_folder(SiteTexts& texts, std::string_view folder) {
  for (const EmbeddedFile& file : embedded_files()) {
    std::string_view path = file.path;
    if (!path.starts_with(folder) || path.substr(folder.size(), 1) != "/") continue;
    path.remove_prefix(folder.size() + 1);
    texts.insert_or_assign(std::string(path), std::string(file.bytes()));
  }
}

void install_templates(SiteTexts& texts) {
  std::string& definitions = texts[kDefinitionsPath];
  for (const std::string& source : source_paths(texts)) {
    const std::string name = *ctl::template_name_of(source);
    const std::string text = expand(source, texts);
    if (auto updated = ctl::with_check_value(definitions, name, ctl::check_value_of(text))) {
      definitions = std::move(*updated);
    }
    texts[std::string(kTemplateFolder) + name] = text;
  }
}

}  // namespace toplist::site
