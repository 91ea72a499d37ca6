#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "harvest/fetch_method.h"
#include "harvest/trade_harvest.h"
#include "run/sys_log.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/site_files/writable.h"
#include "util/fields.h"

namespace toplist::ctl {
namespace {

void add(const Kind& kind, std::size_t line, std::string message, Diagnostics& findings) {
  findings.push_back({&kind, {.file = kHarvestConfigPath, .line = line}, std::move(message)});
}

/// Reports a folder that cannot be written to; true when it can.
bool check_writable_folder(const Kind& kind, const std::string& path, Diagnostics& findings) {
  const bool writable = ::access((path + "/.").c_str(), W_OK | X_OK) == 0;
  if (!writable) findings.push_back({&kind, {.file = path}, "is no folder that can be written to"});
  return writable;
}

/// The log is opened anew for each line: it counts whether that works, not whose the folder is.
void check_log(Diagnostics& findings) {
  if (can_be_written(kLogPath)) return;
  const std::string fault = std::generic_category().message(errno);
  const bool is_there = ::access(kLogPath, F_OK) == 0;
  if (!is_there && !check_writable_folder(kinds::kLogFolder, kLogFolder, findings)) return;
  findings.push_back({&kinds::kLogFile, {.file = kLogPath}, "cannot be written: " + fault});
}

void check_lines(std::string_view text, const HarvestConfig& config, Diagnostics& findings) {
  std::size_t number = 0;
  FieldReader lines(text, kLineSeparator);
  for (std::string_view line; lines.next(line);) {
    ++number;
    if (line.ends_with('\r') && number <= HarvestConfig::kLineCount) {
      add(kinds::kCarriageReturn, number, "the line ends with a carriage return", findings);
    }
  }
  const std::string count = "the file has " + std::to_string(number) + " lines, not " +
                            std::to_string(HarvestConfig::kLineCount);
  if (number < HarvestConfig::kLineCount) {
    add(kinds::kShortConfiguration, number, count, findings);
  } else if (number > HarvestConfig::kLineCount && config.harvest_enabled()) {
    add(kinds::kLongConfiguration, HarvestConfig::kLineCount + 1, count, findings);
  }
}

void check_harvest(const HarvestConfig& config, Diagnostics& findings) {
  if (!config.harvest_enabled()) return;
  check_writable_folder(kinds::kHarvestFolder, config.thumb_dir(), findings);
  if (!config.thumb_dir().ends_with('/')) {
    add(kinds::kThumbnailSlash, HarvestConfig::kThumbDir,
        in_quotes(config.thumb_dir()) + " ends with no \"/\"", findings);
  }
  const std::string& method = config.fetch_method();
  if (!is_fetch_method(method)) {
    add(kinds::kUnknownFetchMethod, HarvestConfig::kFetchMethod,
        in_quotes(method) + " is no fetch method", findings);
  } else if (method != kRawHttpMethod) {  // the built-in client needs no folder for what it fetches
    check_writable_folder(kinds::kHarvestFolder, kDownloadFolder, findings);
  }
}

void check_thumbnails(const SiteView& site, Diagnostics& findings) {
  const std::string& folder = site.run.config.thumb_dir();
  if (site.rehearsal.folder_error()) {
    findings.push_back({&kinds::kThumbnailFolder,
                        {.file = folder},
                        "thumbnails are required, and the folder " +
                            cannot_open(site.rehearsal.folder_error()->code)});
    return;
  }
  std::size_t lacking = 0;
  for (const TradeRow& row : site.run.rows) {
    if (row.mark == 0) continue;
    ++lacking;
    findings.push_back(
        {&kinds::kMissingThumbnail, {.file = folder}, "holds no " + row.domain + ".jpg"});
  }
  check_none_has(kinds::kNoThumbnails, folder, lacking, site, findings);
}

}  // namespace

void check_configuration(const SiteView& site, Diagnostics& findings) {
  check_log(findings);
  const SiteFile file(kHarvestConfigPath);
  if (!check_open(file, findings)) return;
  check_lines(file.text(), site.run.config, findings);
  check_harvest(site.run.config, findings);
  check_thumbnails(site, findings);
}

}  // namespace toplist::ctl
