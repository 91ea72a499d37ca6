#include "toplistctl/lib/site_view/status.h"

#include <fmt/core.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <system_error>

#include "render/render.h"
#include "run/sys_log.h"
#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/site_files/paths.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "util/fields.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

/// The file that a path leads to; nothing when there is none.
std::optional<struct stat> stat_of(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

/// Whether runs are to build the page: not when the toplist is switched off by its mode.
bool is_expected(const ToplistView& toplist) {
  return toplist.allowed || toplist.definition->build_mode == "1";
}

/// What follows a template's last tag: every page of it ends so.
std::string end_of_pages(std::string_view text) {
  constexpr std::size_t kSwallowed = 2;  // by a short tag "att" (contract: short-att)
  std::string end;
  BlockState block;
  FieldReader lines(text, kLineSeparator);
  for (std::string_view line; lines.next(line);) {
    if (!block.keeps(line)) continue;
    if (const std::size_t mark = line.rfind(kTagMark); mark != std::string_view::npos) {
      line.remove_prefix(std::min(mark + kTagMark.size() + kSwallowed, line.size()));
      end.clear();
    }
    end.append(line) += '\n';
  }
  return end;
}

/// Why the page at this path is not whole, if it is not.
std::optional<std::string> cut_of(const struct stat& page, const ToplistDefinition& toplist) {
  constexpr std::size_t kCompared = 4096;
  const auto source = stat_of(toplist.template_path);
  if (!source || source->st_mtime > page.st_mtime || !S_ISREG(page.st_mode)) return std::nullopt;
  const auto text = read_file(toplist.template_path);
  if (!text) return std::nullopt;
  std::string end = end_of_pages(*text);
  if (end.empty()) return std::nullopt;
  if (page.st_size == 0) return "the page is empty";
  end.erase(0, end.size() - std::min(end.size(), kCompared));
  const auto page_end = read_file_end(toplist.output_path, end.size());
  if (!page_end || page_end->text == end) return std::nullopt;
  return fmt::format("the page ends after {} bytes, not as {} does",
                     grouped(static_cast<std::size_t>(page.st_size)), toplist.template_path);
}

PageStatus page_status(const ToplistView& toplist, std::int64_t limit, std::time_t now) {
  PageStatus page{.record = toplist.record,
                  .page = toplist.definition->output_path,
                  .age = std::nullopt,
                  .next_run = toplist.next_run,
                  .late = false};
  const auto file = stat_of(page.page);
  if (file) page.age = now - file->st_mtime;
  if (!is_expected(toplist)) return page;
  page.late = !page.age || *page.age > limit;
  if (file) page.cut = cut_of(*file, *toplist.definition);
  return page;
}

void read_log_lines(const StatusLimits& limits, std::time_t now, SiteStatus& status) {
  constexpr std::size_t kReadBytes = std::size_t{1} << 20;
  std::optional<std::int64_t> span = limits.log_span;
  for (const PageStatus& page : status.pages) {
    if (!limits.log_span && page.age && (!span || *page.age < *span)) span = page.age;
  }
  const auto log = read_file_end(kLogPath, kReadBytes);
  if (!log) {
    if (log.error().code != ENOENT && !status.log_fault) status.log_fault = log.error().text();
    return;
  }
  // The first line of a log that is cut is not whole.
  std::vector<LogLine> lines =
      read_log(std::string_view(log->text).substr(log->is_cut ? log->text.find('\n') + 1 : 0));
  const std::size_t read = lines.size();
  if (span) lines = lines_since(std::move(lines), now - *span);
  status.has_more_lines = log->is_cut && lines.size() == read;
  std::erase_if(lines, [](const LogLine& line) { return !line.is_own(); });
  status.log_lines = std::move(lines);
}

void count_thumbnails(const RunState& run, std::int64_t limit, std::time_t now,
                      SiteStatus& status) {
  status.thumbnails_required = run.config.thumbnails_required();
  for (const TradeRow& row : run.rows) {
    const auto file = stat_of(run.config.thumb_dir() + row.domain + ".jpg");
    if (file && now - file->st_mtime > limit) ++status.stale_thumbnails;
    if (!file && status.thumbnails_required) ++status.without_thumbnail;
  }
}

}  // namespace

std::size_t SiteStatus::failed_runs() const {
  return static_cast<std::size_t>(std::count_if(
      log_lines.begin(), log_lines.end(),
      [](const LogLine& line) { return line.severity == severity_text(Severity::run_ends); }));
}

bool SiteStatus::is_fine() const {
  const bool pages_fine = ending.empty() && !little_room &&
                          std::all_of(pages.begin(), pages.end(),
                                      [](const PageStatus& page) { return page.is_fine(); });
  return pages_fine && (pages_only || (failed_runs() == 0 && !log_fault && !running_late));
}

std::vector<PageStatus> page_statuses(const SiteView& site, std::int64_t limit, std::time_t now) {
  std::vector<PageStatus> pages;
  for (const ToplistView& toplist : site.toplists) {
    pages.push_back(page_status(toplist, limit, now));
  }
  return pages;
}

std::optional<LittleRoom> little_room(const SiteView& site) {
  struct FileSystem {
    std::string folder;       ///< one of those with pages
    std::uintmax_t need = 0;  ///< bytes of the pages
  };
  std::map<dev_t, FileSystem> file_systems;
  for (const ToplistView& toplist : site.toplists) {
    if (!is_expected(toplist)) continue;
    const std::string folder = real_path(toplist.definition->output_path).parent_path().string();
    const auto status = stat_of(folder);
    if (!status) continue;
    FileSystem& file_system = file_systems[status->st_dev];
    file_system.folder = folder;
    std::uintmax_t size = 0;  // a page is about as large as its template, if not cut
    for (const auto& path : {toplist.definition->output_path, toplist.definition->template_path}) {
      const auto file = stat_of(path);
      if (file && S_ISREG(file->st_mode))
        size = std::max<std::uintmax_t>(size, static_cast<std::uintmax_t>(file->st_size));
    }
    file_system.need += size;
  }
  for (const auto& [device, file_system] : file_systems) {
    struct statvfs room {};
    if (::statvfs(file_system.folder.c_str(), &room) != 0) continue;
    const std::uintmax_t free = std::uintmax_t{room.f_bavail} * room.f_frsize;
    if (free >= file_system.need) continue;
    return LittleRoom{file_system.folder,
                      fmt::format("the file system has {} bytes free, the pages take {}",
                                  grouped(free), grouped(file_system.need))};
  }
  return std::nullopt;
}

std::optional<std::string> log_fault() {
  const auto why = why_not_writable(kLogPath);
  if (!why) return std::nullopt;
  return "the log cannot be written: " + std::generic_category().message(why->code);
}

SiteStatus status_of(const SiteView& site, const StatusLimits& limits, std::time_t now) {
  SiteStatus status;
  status.pages_only = limits.pages_only;
  status.ending = site.rehearsal.ending();
  status.pages = page_statuses(site, limits.page_age, now);
  status.little_room = little_room(site);
  status.log_fault = log_fault();
  read_log_lines(limits, now, status);
  status.running = lock_holder();
  status.running_late =
      status.running && status.running->seconds && *status.running->seconds > limits.page_age;
  status.active_trades = site.run.rows.size();
  count_thumbnails(site.run, limits.thumbnail_age, now, status);
  return status;
}

std::string state_of(const PageStatus& page) {
  if (page.cut) return "CUT";
  if (page.late) return page.age ? "LATE" : "MISSING";
  return "fine";
}

std::string next_run_of(const PageStatus& page) {
  return page.next_run.kind == Prospect::Kind::unreached ? "not reached" : page.next_run.text();
}

std::string running_text(const SiteStatus& status) {
  if (!status.running) return "No run is in progress.\n";
  const auto& seconds = status.running->seconds;
  return fmt::format("A run is in progress{}{}.\n",
                     seconds ? ", started " + duration_text(*seconds) + " ago" : "",
                     status.running_late ? ": LATE" : "");
}

std::string trades_text(const SiteStatus& status) {
  std::string text = fmt::format("{} active trades", status.active_trades);
  if (status.thumbnails_required) {
    text += fmt::format(", {} without a thumbnail, {} with a stale one", status.without_thumbnail,
                        status.stale_thumbnails);
  }
  return text + ".\n";
}

std::string duration_text(std::int64_t seconds) {
  struct Unit {
    const char* name;
    std::int64_t seconds;
  };
  constexpr std::array<Unit, 4> kUnits{
      {{"d", kDaySeconds}, {"h", 60 * kMinuteSeconds}, {"m", kMinuteSeconds}, {"s", 1}}};
  std::string text;
  int shown = 0;
  for (const Unit& unit : kUnits) {
    const std::int64_t count = seconds / unit.seconds;
    seconds %= unit.seconds;
    if (count == 0 && shown == 0 && unit.seconds > 1) continue;
    if (shown++ == 2) break;
    text += fmt::format("{}{}{}", text.empty() ? "" : " ", count, unit.name);
  }
  return text;
}

}  // namespace toplist::ctl
