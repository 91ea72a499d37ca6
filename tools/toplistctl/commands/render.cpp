#include "render/render.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <numeric>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toplist/alternatives.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/paths.h"
#include "toplistctl/lib/site_files/public_file.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "toplistctl/lib/site_view/site_view.h"
#include "util/fields.h"
#include "util/file.h"
#include "util/shell.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

struct Arguments {
  std::string site = ".";
  std::string name;        ///< of a template or page
  std::size_t record = 0;  ///< in the definitions, from 1; 0: the first one called so
  bool all = false;
  std::string folder;
  bool diff = false;
};

// --- where pages go ---

/// A folder that takes the pages of a run at their own paths, absolute ones below it, too. It is
/// never left through a link.
class PageFolder {
 public:
  /// `folder` is relative to the working directory at this moment; it is created when needed.
  explicit PageFolder(const fs::path& folder) : folder_(fs::current_path() / folder) {}

  /// Writes a page, in place of one that is there. A path with "..", or one whose place in the
  /// folder is the site's own page, is refused.
  [[nodiscard]] Expected<void> add(const std::string& path, std::string_view page) const {
    const fs::path name = path.c_str();  // up to a NUL, as the system takes it
    if (std::find(name.begin(), name.end(), "..") != name.end()) {
      return failure("its path holds \"..\"");
    }
    const fs::path place = name.relative_path();
    if (real_path(folder_ / place) == real_path(name)) {
      return failure("this is the site's own page, which only a run writes");
    }
    return open_folder(place.parent_path()).and_then([&](const UniqueFd& folder) {
      return write_anew(folder.get(), place, page);
    });
  }

  /// Puts a link to a public file of the site at its path. What is there already stays.
  [[nodiscard]] Expected<void> add_link(const fs::path& path) const {
    return open_folder(path.parent_path()).and_then([&](const UniqueFd& folder) -> Expected<void> {
      const fs::path target = fs::current_path() / path;
      if (::symlinkat(target.c_str(), folder.get(), path.filename().c_str()) == 0 ||
          errno == EEXIST) {
        return {};
      }
      return system_error("cannot create", (folder_ / path).string(), errno);
    });
  }

 private:
  /// Opens a folder below this one step by step, and creates what is missing.
  [[nodiscard]] Expected<UniqueFd> open_folder(const fs::path& below) const {
    std::error_code error;
    fs::create_directories(folder_, error);
    if (error) return system_error("cannot create", folder_.string(), error.value());
    UniqueFd folder(::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    fs::path so_far = folder_;
    for (const fs::path& part : below) {
      so_far /= part;
      ::mkdirat(folder.get(), part.c_str(), 0777);  // the next call reports a failure
      folder = UniqueFd(
          ::openat(folder.get(), part.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
      if (!folder) break;
    }
    if (!folder) return system_error("cannot open", so_far.string(), errno);
    return folder;
  }

  /// A file that is there goes first: it may be a link to something else.
  [[nodiscard]] Expected<void> write_anew(int folder, const fs::path& place,
                                          std::string_view page) const {
    const std::string name = place.filename();
    ::unlinkat(folder, name.c_str(), 0);  // the next call reports a failure
    const UniqueFd file(
        ::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (file && write_fully(file.get(), page)) return {};
    const int error = errno;
    if (file) ::unlinkat(folder, name.c_str(), 0);
    return system_error("cannot write", (folder_ / place).string(), error);
  }

  fs::path folder_;
};

/// Calls `use` with the address in each src, href and url() of a page or a style sheet.
template <typename Use>
void for_each_address(std::string_view text, Use use) {
  for (const std::string_view mark : {"src=", "href=", "url("}) {
    for (std::size_t at = 0; (at = text.find(mark, at)) != std::string_view::npos;) {
      at += mark.size();
      if (text.substr(at, 1).find_first_of("\"'") == 0) ++at;
      use(text.substr(at, text.find_first_of("\"' >)?#\n", at) - at));
    }
  }
}

/// Links the style sheets and pictures that pages need, by their paths and texts, and what these
/// style sheets need in turn.
Expected<void> link_needed_files(const PageFolder& folder, std::map<fs::path, std::string> texts) {
  std::set<fs::path> linked;
  while (!texts.empty()) {
    const auto user = texts.extract(texts.begin());
    std::set<fs::path> needed;
    for_each_address(user.mapped(), [&](std::string_view address) {
      needed.insert((address.starts_with('/') ? fs::path(address).relative_path()
                                              : user.key().parent_path() / address)
                        .lexically_normal());
    });
    for (const fs::path& path : needed) {
      if (path.extension() == ".html" || !open_public_file(path)) continue;
      if (!linked.insert(path).second) continue;
      if (auto added = folder.add_link(path); !added) return added;
      if (path.extension() == ".css") texts[path] = read_file(path).value_or("");
    }
  }
  return {};
}

// --- how a page differs from what is at its path ---

/// diff's exit status when it found a difference; a greater one means trouble.
constexpr int kDiffers = 1;

/// Prints how a page differs from what is at its path, as "diff --unified" writes it: when there is
/// no file, all of the page is new. Returns the exit status.
Expected<int> print_diff(const std::string& path, std::string_view page) {
  const UniqueFd file(::memfd_create("page", 0));  // diff inherits it
  if (!file || !write_fully(file.get(), page)) return system_error("cannot store", "a page", errno);
  std::error_code ignored;
  const bool is_there = fs::is_regular_file(path.c_str(), ignored);
  const std::string command = fmt::format(
      "diff --unified --text --label={} --label={} {} /dev/fd/{}",
      shell_word(printable(path) + (is_there ? " (now)" : " (not there)")),
      shell_word(printable(path) + " (next run)"),
      shell_word(is_there ? fs::absolute(path.c_str()).string() : "/dev/null"), file.get());
  std::FILE* const output = ::popen(command.c_str(), "re");
  if (output == nullptr) return system_error("cannot run", "diff", errno);
  std::string text;
  std::array<char, 4096> bytes{};
  while (const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), output)) {
    text.append(bytes.data(), count);
  }
  const int ended = ::pclose(output);
  if (!WIFEXITED(ended) || WEXITSTATUS(ended) > kDiffers) {
    return failure(fmt::format("cannot compare {}: diff failed", path));
  }
  return print(text, WEXITSTATUS(ended) == kDiffers ? kExitFindings : 0);
}

/// Makes the page of one toplist by picks of alternatives that are those of a run in some second.
/// So a page that was written in another second differs only where something else has changed.
class PickedPages {
 public:
  /// The site must live as long as this object; the columns of its rows change.
  explicit PickedPages(SiteView& site) : site_(site) {
    restore_columns();
    for (const TradeRow& row : site_.run.rows) {
      for (const std::string_view column : row.extra_columns) {
        period_ = std::min(std::lcm(period_, alternative_count(column)), kMostPicks);
      }
    }
  }

  /// The page that shares most lines with what is at its path now. Throws StrayMark when all picks
  /// give one.
  std::string nearest_page(const ToplistView& toplist, std::string_view text) {
    const std::string now = read_file(toplist.definition->output_path).value_or("");
    std::optional<std::string> nearest;
    for (std::size_t drawn = 0, least = SIZE_MAX; drawn < period_ && least > 0; ++drawn) {
      restore_columns();
      pick_alternatives(site_.run.rows, drawn);
      std::optional<std::string> page = page_of(toplist, text);
      if (!page) continue;
      const std::size_t different = *page == now ? 0 : 1 + lines_not_shared(*page, now);
      if (different >= least) continue;
      least = different;
      nearest = std::move(page);
    }
    // Without one, the last picks bring the stray mark again, which the caller reports.
    return nearest ? *nearest
                   : render_template(toplist.definition->template_path, text, toplist.passing);
  }

 private:
  /// All picks are the same again after so many numbers that a second may draw. Above the limit the
  /// first ones must do.
  static constexpr std::size_t kMostPicks = 60;

  void restore_columns() {
    for (TradeRow& row : site_.run.rows) row.extra_columns.clear();
    attach_extra_columns(site_.run.columns_file.text(), site_.run.rows);
  }

  /// Nothing when the picks of now bring a stray mark into the page.
  static std::optional<std::string> page_of(const ToplistView& toplist, std::string_view text) try {
    return render_template(toplist.definition->template_path, text, toplist.passing);
  } catch (const StrayMark&) {
    return std::nullopt;
  }

  static std::vector<std::string_view> sorted_lines(std::string_view text) {
    std::vector<std::string_view> lines;
    FieldReader reader(text, kLineSeparator);
    for (std::string_view line; reader.next(line);) lines.push_back(line);
    std::ranges::sort(lines);
    return lines;
  }

  static std::size_t lines_not_shared(std::string_view one, std::string_view other) {
    std::vector<std::string_view> different;
    std::ranges::set_symmetric_difference(sorted_lines(one), sorted_lines(other),
                                          std::back_inserter(different));
    return different.size();
  }

  SiteView& site_;
  std::size_t period_ = 1;
};

// --- one page ---

tl::unexpected<Error> not_found(const Arguments& arguments) {
  return failure(fmt::format(
      "{} has no toplist with the template or page {}{}", kDefinitionsPath, arguments.name,
      arguments.record == 0 ? "" : fmt::format(" as record {}", arguments.record)));
}

/// Says why the next run leaves the page as it is.
void warn_of(const ToplistView& toplist) {
  if (toplist.next_run.is_built()) return;
  warn(fmt::format("record {}: the next run does not write {}: {}", toplist.record,
                   toplist.definition->output_path, toplist.next_run.text()));
}

/// Renders it whether the next run does or not: a preview is there to be looked at before.
Expected<int> print_page(SiteView& site, const ToplistView& toplist, bool as_diff) try {
  const auto& path = toplist.definition->template_path;
  const auto text = read_file(path);
  if (!text) return tl::unexpected(text.error());
  const std::string page = as_diff ? PickedPages(site).nearest_page(toplist, *text)
                                   : render_template(path, *text, toplist.passing);
  warn_of(toplist);
  if (as_diff) return print_diff(toplist.definition->output_path, page);
  return print(page);
} catch (const StrayMark& stray) {
  warn(stray.what());
  return kExitFindings;
}

Expected<int> render_one(const Arguments& arguments) {
  SiteView site;
  const auto definitions = read_file(kDefinitionsPath);
  if (!definitions) return tl::unexpected(definitions.error());
  const ToplistView* toplist = site.find(arguments.name, arguments.record);
  if (toplist == nullptr) return not_found(arguments);
  if (site.run.rows.empty()) {
    return failure(fmt::format("there is no trade to show: {}", site.rehearsal.ending()));
  }
  return print_page(site, *toplist, arguments.diff);
}

// --- all pages ---

/// The record that a run takes a page from: of several with the same page, it writes the last one
/// over the others.
std::map<fs::path, std::size_t> records_of_pages(const SiteView& site) {
  std::map<fs::path, std::size_t> records;
  for (const ToplistView& toplist : site.toplists) {
    if (!toplist.next_run.is_built()) continue;
    records[real_path(toplist.definition->output_path)] = toplist.record;
  }
  return records;
}

/// Renders all pages; those that cannot be written or compared are reported and left out.
int render_all(const Arguments& arguments, const PageFolder& folder) {
  std::vector<std::string> pages;
  SiteView site(kSteps, [&pages](const std::string& /*path*/, std::string_view page) {
    pages.emplace_back(page);
  });
  const auto records = records_of_pages(site);
  std::optional<PickedPages> picked;
  if (arguments.diff) picked.emplace(site);
  int status = 0;  // grows with what went wrong
  std::map<fs::path, std::string> written;
  auto page = pages.begin();
  for (const ToplistView& toplist : site.toplists) {
    const std::string& path = toplist.definition->output_path;
    if (toplist.next_run.kind == Prospect::Kind::skipped) warn_of(toplist);
    if (!toplist.next_run.is_built()) continue;
    std::string text = std::move(*page++);
    if (const std::size_t last = records.at(real_path(path)); last != toplist.record) {
      warn(fmt::format("record {}: the page {} is left out: a run then writes record {} over it",
                       toplist.record, path, last));
      continue;
    }
    const auto compare = [&](const std::string& source) {
      return print_diff(path, picked->nearest_page(toplist, source));
    };
    const Expected<int> done = arguments.diff
                                   ? read_file(toplist.definition->template_path).and_then(compare)
                                   : folder.add(path, text).map([] { return 0; });
    status = std::max(
        status, done ? *done : fail(fmt::format("{} is left out: {}", path, done.error().text())));
    if (done && !path.starts_with('/')) written[path.c_str()] = std::move(text);
  }
  if (!arguments.diff) {
    const auto linked = link_needed_files(folder, std::move(written));
    if (!linked) status = fail(linked.error().text());
  }
  if (site.rehearsal.ending().empty()) return status;
  warn(fmt::format("the next run ends early: {}", site.rehearsal.ending()));
  return std::max(status, kExitFindings);
}

// --- the command ---

Expected<int> render(const Arguments& arguments) {
  if (!arguments.all && arguments.name.empty()) return failure("TEMPLATE or --all is required");
  if (arguments.all && !arguments.diff && arguments.folder.empty()) {
    return failure("--all requires --into or --diff");
  }
  const PageFolder folder(arguments.folder);  // before the site becomes the working directory
  return enter_site(arguments.site).and_then([&]() -> Expected<int> {
    if (arguments.all) return render_all(arguments, folder);
    return render_one(arguments);
  });
}

}  // namespace

void add_render_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command =
      program.add_command("render", "Write a page as a run would write it now, without the run");
  command.footer(
      "The site is only read. Exit status: 0 rendered, 1 a run would stop or, with --diff, pages "
      "differ, 2 not rendered.\n"
      "Examples:\n"
      "  toplistctl render --diff index.tpl\n"
      "  toplistctl render --all --into /tmp/preview");
  add_site_option(command, arguments->site);
  const Option name = command.text("template", "TEMPLATE", arguments->name,
                                   "A name as in the definitions, or a page's path");
  const Option record = command.number("--record", "N", arguments->record, 1,
                                       "This record of the definitions, of several with TEMPLATE");
  const Option all = command.flag("--all", arguments->all, "All pages that a run would write");
  const Option into = command.text(
      "--into", "FOLDER", arguments->folder,
      "Write them below FOLDER, at their paths, with links to their style sheets and pictures");
  record.needs(name);
  all.excludes(name).excludes(record);
  into.needs(all);
  command.flag("--diff", arguments->diff, "What would change in the pages, as a unified diff")
      .excludes(into);
  command.run([arguments] { return render(*arguments); });
}

}  // namespace toplist::ctl
