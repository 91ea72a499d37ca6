#include <ctime>
#include <filesystem>
#include <map>
#include <string>

#include "run/statistics.h"
#include "run/sys_log.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/site_files/real_path.h"
#include "toplistctl/lib/site_view/status.h"

namespace toplist::ctl {
namespace {

constexpr std::int64_t kOldAge = kDaySeconds;

/// Finds what is wrong with the places of the pages.
class PlaceCheck {
 public:
  PlaceCheck(const SiteView& site, Diagnostics& findings) : site_(site), findings_(findings) {}

  void check() {
    for (const ToplistView& toplist : site_.toplists) add_page(toplist);
    for (const char* path : kNeededFiles) check_file(path);
    check_file(kLogPath);
    for (const ToplistDefinition& toplist : site_.run.definitions) {
      for (const std::string& path : toplist_inputs(toplist, site_.run.settings)) check_file(path);
    }
    for (const TradeRow& row : site_.run.rows) check_history(history_path(row.domain));
  }

 private:
  void add(const Kind& kind, const ToplistView& toplist, const std::string& what) {
    findings_.push_back({&kind,
                         {.file = kDefinitionsPath, .record = toplist.record},
                         toplist.definition->template_path + ": the page " +
                             in_quotes(toplist.definition->output_path) + " is " + what});
  }

  void add_page(const ToplistView& toplist) {
    const std::string& path = toplist.definition->output_path;
    const auto [first, is_new] = pages_.emplace(file_identity(path), &toplist);
    if (is_new) return;
    add(kinds::kDuplicateOutput, toplist,
        "also that of record " + std::to_string(first->second->record));
  }

  /// Tells of the page that this file is, once.
  void check_file(const std::string& path) {
    const auto page = pages_.find(file_identity(path));
    if (page == pages_.end()) return;
    const bool is_log = path == kLogPath;
    add(kinds::kOverwrittenFile, *page->second,
        is_log ? "the log" : "also " + path + ", which a run reads");
    pages_.erase(page);
  }

  /// They are many: those that are not there have no identity to be found out.
  void check_history(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::exists(path, ignored)) check_file(path);
  }

  const SiteView& site_;
  Diagnostics& findings_;
  std::map<std::string, const ToplistView*> pages_;  ///< by their files, the first of each
};

void check_ages(const SiteView& site, Diagnostics& findings) {
  for (const PageStatus& page : page_statuses(site, kOldAge, std::time(nullptr))) {
    // One that the next run does not write has another finding.
    if (!page.late || !page.age || !page.next_run.is_built()) continue;
    findings.push_back({&kinds::kOldPage,
                        {.file = page.page},
                        "was written " + duration_text(*page.age) + " ago"});
  }
}

}  // namespace

void check_pages(const SiteView& site, Diagnostics& findings) {
  PlaceCheck(site, findings).check();
  check_ages(site, findings);
}

}  // namespace toplist::ctl
