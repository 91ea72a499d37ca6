#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <system_error>

#include "harvest/fetch_method.h"
#include "harvest/harvest.h"
#include "harvest/trade_harvest.h"
#include "run/sys_log.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/site_files/new_file.h"
#include "toplistctl/lib/site_files/site_change.h"
#include "toplistctl/lib/site_files/site_lock.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "toplistctl/lib/site_view/status.h"
#include "util/fields.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

using Line = HarvestConfig::Line;

Place line_place(std::size_t line) { return {.file = kHarvestConfigPath, .line = line}; }

// --- the log, the lock and folders ---

/// Reports a folder that cannot be written to; true when it can.
bool check_writable_folder(const Kind& kind, const std::string& path, Diagnostics& findings) {
  if (::access((path + "/.").c_str(), W_OK | X_OK) == 0) return true;
  add(findings, kind, {.file = path}, "toplist cannot write to this folder");
  return false;
}

/// A run opens the log again for each line, so the check is whether this works.
void check_log(Diagnostics& findings) {
  const auto fault = log_fault();
  if (!fault) return;
  const bool is_there = ::access(kLogPath, F_OK) == 0;
  if (!is_there && !check_writable_folder(kinds::kLogFolder, kLogFolder, findings)) return;
  add(findings, kinds::kLogFile, {.file = kLogPath}, "{}", *fault);
}

/// flock(1) opens the file for reading.
void check_lock(Diagnostics& findings) {
  if (::access(kRunLockPath, F_OK) != 0 || ::access(kRunLockPath, R_OK) == 0) return;
  add(findings, kinds::kLockFile, {.file = kRunLockPath}, "{} cannot open it: it belongs to {}",
      user_name(::geteuid()), owner_name(kRunLockPath));
}

/// What a killed command has left.
void check_changes(Diagnostics& findings) {
  if (lock_holder()) return;  // a change may be in progress
  if (const auto change = unfinished_change()) {
    add(findings, kinds::kUnfinishedChange, {.file = "l/sys/undo"}, "{} was killed before it ended",
        *change);
  }
  for (const char* folder : {"d/t/", "d/tl/", "d/h/", "d/gr/"}) {
    for (const std::string& path : files_in(folder, kNewSuffix)) {
      add(findings, kinds::kLeftoverFile, {.file = path}, "a killed command left this file");
    }
  }
}

// --- the configuration ---

void check_lines(std::string_view text, const HarvestConfig& config, Diagnostics& findings) {
  std::size_t number = 0;
  FieldReader lines(text, kLineSeparator);
  for (std::string_view line; lines.next(line);) {
    ++number;
    if (line.ends_with('\r') && number <= HarvestConfig::kLineCount) {
      add(findings, kinds::kCarriageReturn, line_place(number),
          "the line ends with a carriage return");
    }
  }
  const bool is_long = number > HarvestConfig::kLineCount && config.harvest_enabled();
  if (number >= HarvestConfig::kLineCount && !is_long) return;
  add(findings, is_long ? kinds::kLongConfiguration : kinds::kShortConfiguration,
      line_place(is_long ? HarvestConfig::kLineCount + 1 : number), "the file has {} lines, not {}",
      number, static_cast<std::size_t>(HarvestConfig::kLineCount));
}

void check_harvest_lines(const HarvestConfig& config, Diagnostics& findings) {
  if (!config.harvest_enabled()) return;
  const std::string& folder = config.thumb_dir();
  check_writable_folder(kinds::kHarvestFolder, folder, findings);
  if (!folder.ends_with('/')) {
    add(findings, kinds::kThumbnailSlash, line_place(Line::kThumbDir),
        "\"{}\" does not end with \"/\"", folder);
  }
  const std::string& method = config.fetch_method();
  if (!is_fetch_method(method)) {
    add(findings, kinds::kUnknownFetchMethod, line_place(Line::kFetchMethod),
        "\"{}\" is not a fetch method", method);
  } else if (method != kRawHttpMethod) {  // the built-in client needs no folder for downloads
    check_writable_folder(kinds::kHarvestFolder, kDownloadFolder, findings);
  }
}

void check_thumbnails(const SiteView& site, Diagnostics& findings) {
  const std::string& folder = site.run.config.thumb_dir();
  if (site.rehearsal.folder_error()) {
    add(findings, kinds::kThumbnailFolder, {.file = folder},
        "thumbnails are required, but the folder cannot be opened: {}",
        std::generic_category().message(site.rehearsal.folder_error()->code));
    return;
  }
  std::size_t lacking = 0;
  for (const TradeRow& row : site.run.rows) {
    if (row.mark == 0) continue;
    ++lacking;
    add(findings, kinds::kMissingThumbnail, {.file = folder}, "there is no {}.jpg", row.domain);
  }
  check_none_has(kinds::kNoThumbnails, folder, lacking, site, findings);
}

// --- the programs of a harvest ---

/// Words at the start of a command line that are part of the shell.
constexpr std::array<std::string_view, 12> kShellWords = {
    ":", ".", "cd", "command", "eval", "exec", "export", "for", "if", "ulimit", "umask", "while"};

bool is_program(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

bool is_found(const std::string& program, std::string_view program_path) {
  if (contains(program, "/")) return is_program(program);
  FieldReader folders(program_path, ':');
  for (std::string_view folder; folders.next(folder);) {
    if (is_program(std::string(folder) + "/" + program)) return true;
  }
  return false;
}

/// The first program of a command line; empty if only the shell can find it out.
std::string program_of(std::string_view command) {
  command.remove_prefix(std::min(command.find_first_not_of(" \t"), command.size()));
  const std::string_view word = command.substr(0, command.find_first_of(" \t;&|<>()"));
  const bool is_shells =
      std::find(kShellWords.begin(), kShellWords.end(), word) != kShellWords.end();
  const bool is_plain = word.find_first_of("\"'\\$`*?[]{}=~#!") == std::string_view::npos;
  return is_plain && !is_shells ? std::string(word) : "";
}

bool is_own_tool(std::string_view program) {
  return program.substr(program.rfind('/') + 1) == "toplist-thumbnail";
}

/// One to four digits without a leading zero, as toplist-thumbnail takes them.
bool is_length(std::string_view text) {
  return !text.empty() && text.size() <= 4 && text[0] != '0' &&
         std::all_of(text.begin(), text.end(), is_digit);
}

bool is_size(std::string_view word) {
  const std::size_t x = word.find('x');
  return x != std::string_view::npos && is_length(word.substr(0, x)) &&
         is_length(word.substr(x + 1));
}

/// Whether only the shell can split the text into words.
bool is_for_shell(std::string_view text) {
  return text.find_first_of("\"'\\$`<>") != std::string_view::npos;
}

/// The words between the paths, and those after toplist-thumbnail, which come before them.
void check_size(const HarvestConfig& config, Diagnostics& findings) {
  const std::string program = program_of(config.image_tool());
  if (!is_own_tool(program)) return;
  const auto refuse = [&findings](Line line, std::string_view words) {
    add(findings, kinds::kThumbnailSize, line_place(line),
        "toplist-thumbnail does not accept \"{}\"", words);
  };
  const std::string_view options = trimmed(trimmed(config.image_tool()).substr(program.size()));
  if (!options.empty() && !is_for_shell(options)) refuse(Line::kImageTool, options);
  const std::string_view size = trimmed(config.image_tool_args());
  if (!size.empty() && !is_size(size) && !is_for_shell(size)) refuse(Line::kImageToolArgs, size);
}

void check_program(Line line, const std::string& program, std::string_view program_path,
                   Diagnostics& findings) {
  if (program.empty() || is_found(program, program_path)) return;
  const std::string where = contains(program, "/") ? "" : fmt::format(" in \"{}\"", program_path);
  add(findings, kinds::kMissingTool, line_place(line), "there is no program \"{}\"{}", program,
      where);
}

// --- the trades that a harvest visits ---

using RecordsByDomain = std::map<std::string_view, std::size_t>;  ///< by domain

/// Whether the image tool reads the picture that is named by the page's host.
bool reads_input(const HarvestConfig& config) {
  const std::string program = program_of(config.image_tool());
  return !program.empty() && !is_own_tool(program);
}

/// The picture that the image tool finds under the name of a page's host.
std::string picture_of(const std::string& host, const RecordsByDomain& records) {
  const auto owner = records.find(host);
  return owner == records.end() ? "which belongs to no trade"
                                : fmt::format("the picture of record {}", owner->second);
}

void check_harvested_trade(const SiteView& site, std::size_t index, const RecordsByDomain& records,
                           Diagnostics& findings) {
  const HarvestConfig& config = site.run.config;
  const TradeRecord& trade = site.run.trades[index];
  const TradeHarvest harvest(trade, config, nullptr);
  const Place place{.file = kTradesPath, .record = index + 1};
  const bool is_plain = !harvest.url().starts_with("https://") && !contains(harvest.host(), ":");
  if (config.fetch_method() == kRawHttpMethod && !is_plain) {
    add(findings, kinds::kNeedsDownloader, place, "the built-in client cannot fetch \"{}\"",
        harvest.url());
  }
  if (harvest.host() != domain_of(trade) && reads_input(config)) {
    add(findings, kinds::kOtherHost, place,
        "the page of {} is on \"{}\", so the image tool works on {}{}.jpg, {}", domain_of(trade),
        harvest.host(), config.thumb_dir(), harvest.host(), picture_of(harvest.host(), records));
  }
}

}  // namespace

void check_configuration(const SiteView& site, Diagnostics& findings) {
  check_log(findings);
  check_lock(findings);
  check_changes(findings);
  const auto text = read_input(kHarvestConfigPath, kinds::kMissingFile, findings);
  if (!text) return;
  check_lines(*text, site.run.config, findings);
  check_harvest_lines(site.run.config, findings);
  check_thumbnails(site, findings);
}

void check_harvest(const SiteView& site, std::string_view program_path, Diagnostics& findings) {
  const HarvestConfig& config = site.run.config;
  if (!config.harvest_enabled()) return;
  check_program(Line::kImageTool, program_of(config.image_tool()), program_path, findings);
  check_size(config, findings);
  if (const DownloadMethod* const method = find_download_method(config.fetch_method())) {
    check_program(Line::kFetchMethod, std::string(method->program()), program_path, findings);
  }
  const auto& trades = site.run.trades;
  RecordsByDomain records;
  for (std::size_t i = 0; i < trades.size(); ++i) records.emplace(domain_of(trades[i]), i + 1);
  for (std::size_t i = kFirstHarvestedTrade; i < trades.size(); ++i) {
    if (is_active(trades[i])) check_harvested_trade(site, i, records, findings);
  }
}

}  // namespace toplist::ctl
