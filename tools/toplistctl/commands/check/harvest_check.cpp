#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>
#include <string>

#include "harvest/fetch_method.h"
#include "harvest/harvest.h"
#include "harvest/trade_harvest.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "util/fields.h"
#include "util/number.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

// --- programs ---

/// Words that may begin a command line and are the shell's own.
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

/// The program that a command line begins with; empty when that cannot be told without the shell.
std::string program_of(std::string_view command) {
  command.remove_prefix(std::min(command.find_first_not_of(" \t"), command.size()));
  const std::string_view word = command.substr(0, command.find_first_of(" \t;&|<>()"));
  const bool is_shells =
      std::find(kShellWords.begin(), kShellWords.end(), word) != kShellWords.end();
  const bool is_plain = word.find_first_of("\"'\\$`*?[]{}=~#!") == std::string_view::npos;
  return is_plain && !is_shells ? std::string(word) : "";
}

constexpr std::string_view kBlanks = " \t";

std::string_view trim_blanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

bool is_own_tool(std::string_view program) {
  return program.substr(program.rfind('/') + 1) == "toplist-thumbnail";
}

/// One to four digits without a zero in front, as toplist-thumbnail takes them.
bool is_length(std::string_view text) {
  return !text.empty() && text.size() <= 4 && text[0] != '0' &&
         std::all_of(text.begin(), text.end(), is_digit);
}

bool is_size(std::string_view word) {
  const std::size_t x = word.find('x');
  return x != std::string_view::npos && is_length(word.substr(0, x)) &&
         is_length(word.substr(x + 1));
}

/// Whether only the shell knows which words the text becomes: it has quotes, variables or
/// redirections.
bool is_for_shell(std::string_view text) {
  return text.find_first_of("\"'\\$`<>") != std::string_view::npos;
}

/// The words between the paths, and those after toplist-thumbnail, which come before them.
void check_size(const HarvestConfig& config, Diagnostics& findings) {
  const std::string program = program_of(config.image_tool());
  if (!is_own_tool(program)) return;
  const auto add = [&](HarvestConfig::Line line, std::string_view words) {
    findings.push_back({&kinds::kThumbnailSize,
                        {.file = kHarvestConfigPath, .line = line},
                        "toplist-thumbnail does not accept " + in_quotes(words)});
  };
  const std::string_view options =
      trim_blanks(trim_blanks(config.image_tool()).substr(program.size()));
  if (!options.empty() && !is_for_shell(options)) add(HarvestConfig::kImageTool, options);
  const std::string_view size = trim_blanks(config.image_tool_args());
  if (!size.empty() && !is_size(size) && !is_for_shell(size)) {
    add(HarvestConfig::kImageToolArgs, size);
  }
}

void check_program(HarvestConfig::Line line, const std::string& program,
                   std::string_view program_path, Diagnostics& findings) {
  if (program.empty() || is_found(program, program_path)) return;
  const std::string where = contains(program, "/") ? "" : " in " + in_quotes(program_path);
  findings.push_back({&kinds::kMissingTool,
                      {.file = kHarvestConfigPath, .line = line},
                      "there is no program " + in_quotes(program) + where});
}

// --- trades ---

using Records = std::map<std::string_view, std::size_t>;  ///< by domain

/// Whether the image tool reads the picture that is named by the page's host.
bool reads_input(const HarvestConfig& config) {
  const std::string program = program_of(config.image_tool());
  return !program.empty() && !is_own_tool(program);
}

/// What the image tool finds under the name of a page's host.
std::string picture_of(const std::string& host, const Records& records) {
  const auto owner = records.find(host);
  return owner == records.end() ? "which is no trade's"
                                : "the picture of record " + std::to_string(owner->second);
}

void check_harvested_trade(const SiteView& site, std::size_t index, const Records& records,
                           Diagnostics& findings) {
  const HarvestConfig& config = site.run.config;
  const TradeRecord& trade = site.run.trades[index];
  const TradeHarvest harvest(trade, config, nullptr);
  const auto add = [&](const Kind& kind, std::string message) {
    findings.push_back({&kind, {.file = kTradesPath, .record = index + 1}, std::move(message)});
  };
  const bool is_plain = !harvest.url().starts_with("https://") && !contains(harvest.host(), ":");
  if (config.fetch_method() == kRawHttpMethod && !is_plain) {
    add(kinds::kNeedsDownloader, "the built-in client cannot fetch " + in_quotes(harvest.url()));
  }
  if (harvest.host() != domain_of(trade) && reads_input(config)) {
    add(kinds::kOtherHost, "the page of " + std::string(domain_of(trade)) + " is on " +
                               in_quotes(harvest.host()) + ": the image tool works on " +
                               config.thumb_dir() + harvest.host() + ".jpg, " +
                               picture_of(harvest.host(), records));
  }
}

}  // namespace

void check_programs(const SiteView& site, std::string_view program_path, Diagnostics& findings) {
  const HarvestConfig& config = site.run.config;
  if (!config.harvest_enabled()) return;
  check_program(HarvestConfig::kImageTool, program_of(config.image_tool()), program_path, findings);
  check_size(config, findings);
  const DownloadMethod* const method = find_download_method(config.fetch_method());
  if (method == nullptr) return;
  check_program(HarvestConfig::kFetchMethod, std::string(method->program()), program_path,
                findings);
}

void check_harvested_trades(const SiteView& site, Diagnostics& findings) {
  if (!site.run.config.harvest_enabled()) return;
  const auto& trades = site.run.trades;
  Records records;
  for (std::size_t i = 0; i < trades.size(); ++i) records.emplace(domain_of(trades[i]), i + 1);
  for (std::size_t i = kFirstHarvestedTrade; i < trades.size(); ++i) {
    if (is_active(trades[i])) check_harvested_trade(site, i, records, findings);
  }
}

}  // namespace toplist::ctl
