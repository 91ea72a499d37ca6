#include <algorithm>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "run/statistics.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/templates/check_values.h"
#include "toplistctl/lib/templates/source.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

using Paths = std::set<std::string>;

void report_unused(const Kind& kind, const std::vector<std::string>& paths, const Paths& used,
                   Diagnostics& findings) {
  for (const std::string& path : paths) {
    if (!used.contains(path)) findings.push_back({&kind, {.file = path}, "nothing uses this file"});
  }
}

/// The templates of all toplists, and what the sources include.
Paths used_templates(const SiteView& site) {
  Paths used;
  for (const ToplistDefinition& toplist : site.run.definitions) used.insert(toplist.template_path);
  for (const std::string& source : find_sources()) {
    for (const SourceFile& file : expand_source(source, read_file).files) {
      used.insert(file.plain_name);
    }
  }
  return used;
}

/// Templates are told from other files by the extensions that those in use have.
void check_templates_used(const SiteView& site, Diagnostics& findings) {
  Paths extensions;
  for (const ToplistDefinition& toplist : site.run.definitions) {
    extensions.insert(fs::path(toplist.template_path).extension().string());
  }
  const Paths used = used_templates(site);
  for (const std::string& extension : extensions) {
    if (extension.empty() || extension == kSourceSuffix) continue;
    report_unused(kinds::kUnusedTemplate, files_in(kTemplateFolder, extension), used, findings);
  }
}

/// Of trades that are not active as well: they may be switched on again.
Paths paths_of_trades(const SiteView& site, const std::function<std::string(std::string)>& path) {
  Paths paths;
  for (const TradeRecord& trade : site.run.trades)
    paths.insert(path(std::string(domain_of(trade))));
  return paths;
}

}  // namespace

std::vector<std::string> files_in(std::string_view folder, std::string_view suffix) {
  std::vector<std::string> files;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder, ignored)) {
    const bool is_meant = entry.path().string().ends_with(suffix);
    if (is_meant && entry.is_regular_file(ignored)) files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

void check_unused_files(const SiteView& site, Diagnostics& findings) {
  check_templates_used(site, findings);
  const fs::path histories = history_path("");
  report_unused(kinds::kUnusedHistory,
                files_in(histories.parent_path().string() + "/", histories.filename().string()),
                paths_of_trades(site, history_path), findings);
  const std::string& folder = site.run.config.thumb_dir();
  if (!folder.ends_with('/')) return;  // then its files are not told from others
  report_unused(
      kinds::kUnusedThumbnail, files_in(folder, ".jpg"),
      paths_of_trades(site,
                      [&folder](const std::string& domain) { return folder + domain + ".jpg"; }),
      findings);
}

}  // namespace toplist::ctl
