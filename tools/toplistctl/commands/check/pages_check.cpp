#include <ctime>
#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "run/statistics.h"
#include "run/sys_log.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/site_files/paths.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_view/status.h"
#include "toplistctl/lib/templates/check_values.h"
#include "toplistctl/lib/templates/source.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

// --- pages ---

/// Finds pages that overwrite files or each other.
class OverwriteCheck {
 public:
  OverwriteCheck(const SiteView& site, Diagnostics& findings) : site_(site), findings_(findings) {}

  void check() {
    for (const ToplistView& toplist : site_.toplists) add_page(toplist);
    for (const char* path : kNeededFiles) check_file(path);
    check_file(kLogPath);
    for (const ToplistDefinition& toplist : site_.run.definitions) {
      for (const std::string& path : toplist_inputs(toplist, site_.run.settings)) check_file(path);
    }
    for (const TradeRow& row : site_.run.rows) {
      // There are many of them. A missing one cannot be a page.
      const std::string path = history_path(row.domain);
      std::error_code ignored;
      if (fs::exists(path, ignored)) check_file(path);
    }
  }

 private:
  void report(const Kind& kind, const ToplistView& toplist, std::string_view what) {
    add(findings_, kind, {.file = kDefinitionsPath, .record = toplist.record},
        "{}: the page \"{}\" is {}", toplist.definition->template_path,
        toplist.definition->output_path, what);
  }

  void add_page(const ToplistView& toplist) {
    const auto [first, is_new] =
        pages_.emplace(file_identity(toplist.definition->output_path), &toplist);
    if (is_new) return;
    report(kinds::kDuplicateOutput, toplist,
           fmt::format("also the page of record {}", first->second->record));
  }

  /// Reports the page that is this file, once.
  void check_file(const std::string& path) {
    const auto page = pages_.find(file_identity(path));
    if (page == pages_.end()) return;
    report(kinds::kOverwrittenFile, *page->second,
           path == kLogPath ? "the log" : fmt::format("{}, which a run reads", path));
    pages_.erase(page);
  }

  const SiteView& site_;
  Diagnostics& findings_;
  std::map<std::string, const ToplistView*> pages_;  ///< by their files, the first of each
};

// --- unused files ---

using Paths = std::set<std::string>;

void report_unused(const Kind& kind, const std::vector<std::string>& paths, const Paths& used,
                   Diagnostics& findings) {
  for (const std::string& path : paths) {
    if (!used.contains(path)) add(findings, kind, {.file = path}, "nothing uses this file");
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

/// A file in the templates' folder is a template if it has the extension of one in use.
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

/// Also of trades that are not active: they may be switched on again.
template <typename PathOf>
Paths paths_of_trades(const SiteView& site, const PathOf& path_of) {
  Paths paths;
  for (const TradeRecord& trade : site.run.trades) {
    paths.insert(path_of(std::string(domain_of(trade))));
  }
  return paths;
}

}  // namespace

void check_pages(const SiteView& site, Diagnostics& findings) {
  OverwriteCheck(site, findings).check();
  if (const auto room = little_room(site)) {
    add(findings, kinds::kLittleRoom, {.file = room->folder}, "{}", room->text);
  }
  for (const PageStatus& page : page_statuses(site, kDaySeconds, std::time(nullptr))) {
    if (page.cut) {
      add(findings, kinds::kCutPage, {.file = page.page}, "{}", *page.cut);
    }
    // A page that the next run does not write has another finding.
    if (page.late && page.age && page.next_run.is_built()) {
      add(findings, kinds::kOldPage, {.file = page.page}, "the page was written {} ago",
          duration_text(*page.age));
    }
  }
}

void check_unused_files(const SiteView& site, Diagnostics& findings) {
  check_templates_used(site, findings);
  const fs::path histories = history_path("");
  report_unused(kinds::kUnusedHistory,
                files_in(histories.parent_path().string() + "/", histories.filename().string()),
                paths_of_trades(site, history_path), findings);
  const std::string& folder = site.run.config.thumb_dir();
  if (!folder.ends_with('/')) return;  // then other files look like thumbnails
  report_unused(
      kinds::kUnusedThumbnail, files_in(folder, ".jpg"),
      paths_of_trades(site,
                      [&folder](const std::string& domain) { return folder + domain + ".jpg"; }),
      findings);
}

}  // namespace toplist::ctl
