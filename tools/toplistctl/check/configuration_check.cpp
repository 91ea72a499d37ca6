#include <unistd.h>

#include <string>

#include "harvest/harvest_worker.h"
#include "run/sys_log.h"
#include "toplistctl/check/check.h"
#include "toplistctl/check/kinds.h"
#include "util/fields.h"

namespace toplist::ctl {
namespace {

constexpr std::size_t kThumbDirLine = 1;
constexpr std::size_t kFetchMethodLine = 5;

void add(const Kind& kind, std::size_t line, std::string message, Findings& findings) {
  findings.push_back({&kind, kHarvestConfigPath, {.line = line}, std::move(message)});
}

void check_writable_folder(const Kind& kind, const std::string& path, Findings& findings) {
  const bool writable = ::access((path + "/.").c_str(), W_OK | X_OK) == 0;
  if (!writable) findings.push_back({&kind, path, {}, "is no folder that can be written to"});
}

void check_lines(const SiteData& site, Findings& findings) {
  std::size_t number = 0;
  FieldReader lines(site.config_file.text(), kLineSeparator);
  for (std::string_view line; lines.next(line);) {
    ++number;
    if (line.ends_with('\r') && number <= HarvestConfig::kLineCount) {
      add(kinds::kCarriageReturn, number, "the line ends with a carriage return", findings);
    }
  }
  const std::string count = "the file has " + std::to_string(number) + " lines, not 7";
  if (number < HarvestConfig::kLineCount) {
    add(kinds::kShortConfiguration, number, count, findings);
  } else if (number > HarvestConfig::kLineCount && site.config.harvest_enabled()) {
    add(kinds::kLongConfiguration, HarvestConfig::kLineCount + 1, count, findings);
  }
}

void check_harvest(const HarvestConfig& config, Findings& findings) {
  if (!config.harvest_enabled()) return;
  check_writable_folder(kinds::kHarvestFolder, config.thumb_dir(), findings);
  if (!config.thumb_dir().ends_with('/')) {
    add(kinds::kThumbnailSlash, kThumbDirLine,
        in_quotes(config.thumb_dir()) + " ends with no \"/\"", findings);
  }
  const std::string& method = config.fetch_method();
  if (!is_fetch_method(method)) {
    add(kinds::kUnknownFetchMethod, kFetchMethodLine, in_quotes(method) + " is no fetch method",
        findings);
  } else if (method != "0") {  // the built-in client needs no folder for what it fetches
    check_writable_folder(kinds::kHarvestFolder, kDownloadFolder, findings);
  }
}

void check_thumbnails(const SiteData& site, Findings& findings) {
  const std::string& folder = site.config.thumb_dir();
  if (site.thumbnails_error != 0) {
    findings.push_back(
        {&kinds::kThumbnailFolder,
         folder,
         {},
         "thumbnails are required, and the folder " + cannot_open(site.thumbnails_error)});
    return;
  }
  for (const TradeRow& row : site.rows) {
    if (row.mark == 0) continue;
    findings.push_back({&kinds::kMissingThumbnail, folder, {}, "holds no " + row.domain + ".jpg"});
  }
}

}  // namespace

void check_configuration(const SiteData& site, Findings& findings) {
  const std::string log = kLogPath;
  check_writable_folder(kinds::kLogFolder, log.substr(0, log.rfind('/')), findings);
  if (!check_open(site.config_file, findings)) return;
  check_lines(site, findings);
  check_harvest(site.config, findings);
  check_thumbnails(site, findings);
}

}  // namespace toplist::ctl
