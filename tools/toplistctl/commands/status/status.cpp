#include "toplistctl/commands/status/status.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <memory>
#include <set>

#include "toplistctl/commands.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/output/records.h"
#include "toplistctl/lib/output/value.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

// --- numbers for programs ---

/// A gauge without labels.
struct Metric {
  const char* name;
  const char* help;
  std::size_t (*value)(const SiteStatus&);
};

template <typename Counts>
std::size_t count_pages(const SiteStatus& status, Counts counts) {
  return static_cast<std::size_t>(std::count_if(status.pages.begin(), status.pages.end(), counts));
}

constexpr std::array<Metric, 13> kMetrics{{
    {"toplist_pages_late", "Pages that runs should build and that are missing or too old.",
     [](const SiteStatus& status) {
       return count_pages(status, [](const PageStatus& page) { return page.late; });
     }},
    {"toplist_pages_missing", "Pages that do not exist.",
     [](const SiteStatus& status) {
       return count_pages(status, [](const PageStatus& page) { return !page.age; });
     }},
    {"toplist_pages_cut", "Pages that are empty or incomplete.",
     [](const SiteStatus& status) {
       return count_pages(status, [](const PageStatus& page) { return page.cut.has_value(); });
     }},
    {"toplist_pages_not_built", "Pages that the next run does not build.",
     [](const SiteStatus& status) {
       return count_pages(status, [](const PageStatus& page) { return !page.next_run.is_built(); });
     }},
    {"toplist_next_run_ends_early", "1 when the next run ends before all toplists are built.",
     [](const SiteStatus& status) { return std::size_t{!status.ending.empty()}; }},
    {"toplist_little_room", "1 when a file system has less free room than the pages take.",
     [](const SiteStatus& status) { return std::size_t{status.little_room.has_value()}; }},
    {"toplist_log_unwritable", "1 when runs cannot write the log.",
     [](const SiteStatus& status) { return std::size_t{status.log_fault.has_value()}; }},
    {"toplist_log_lines", "Lines logged since the newest page, or in the requested span.",
     [](const SiteStatus& status) { return status.log_lines.size(); }},
    {"toplist_failed_runs", "How many of these lines say that a run ended early.",
     [](const SiteStatus& status) { return status.failed_runs(); }},
    {"toplist_run_seconds", "Age of the run in progress; 0 when there is none.",
     [](const SiteStatus& status) {
       return status.running ? static_cast<std::size_t>(status.running->seconds.value_or(0)) : 0U;
     }},
    {"toplist_trades_active", "Trades that toplists can show.",
     [](const SiteStatus& status) { return status.active_trades; }},
    {"toplist_trades_without_thumbnail", "Active trades without a required thumbnail.",
     [](const SiteStatus& status) { return status.without_thumbnail; }},
    {"toplist_thumbnails_stale", "Thumbnails of active trades that are too old.",
     [](const SiteStatus& status) { return status.stale_thumbnails; }},
}};

std::string metric_head(std::string_view name, std::string_view help) {
  return fmt::format("# HELP {0} {1}\n# TYPE {0} gauge\n", name, help);
}

/// A label's value: UTF-8, in which backslash, quote and line feed are escaped.
std::string label_value(const std::string& raw) {
  std::string text = as_utf8(raw);
  replace_all(text, "\\", "\\\\");
  replace_all(text, "\"", "\\\"");
  replace_all(text, "\n", "\\n");
  return text;
}

// --- texts for people ---

std::string pages_table(const SiteStatus& status) {
  Table table({{"RECORD", Table::Align::right},
               {"PAGE"},
               {"AGE", Table::Align::right},
               {"STATE"},
               {"NEXT RUN"}});
  for (const PageStatus& page : status.pages) {
    table.add_row({std::to_string(page.record), page.page,
                   page.age ? duration_text(*page.age) : "none", state_of(page),
                   next_run_of(page)});
  }
  return table.text();
}

std::string log_text(const SiteStatus& status) {
  if (status.log_fault) return *status.log_fault + ". Failures of runs are not logged.\n";
  if (status.log_lines.empty()) return "Nothing was logged.\n";
  return fmt::format("Lines logged: {}{}\n\n", status.has_more_lines ? "more than " : "",
                     status.log_lines.size()) +
         log_summary(status.log_lines).text(Format::table);
}

}  // namespace

std::string status_text(const SiteStatus& status) {
  std::string text = pages_table(status) + "\n";
  for (const PageStatus& page : status.pages) {
    if (page.cut) text += fmt::format("{}: {}.\n", page.page, *page.cut);
  }
  if (!status.ending.empty()) text += fmt::format("The next run ends early: {}.\n", status.ending);
  if (const auto& room = status.little_room)
    text += fmt::format("{}: {}.\n", room->folder, room->text);
  return text + running_text(status) + trades_text(status) + log_text(status);
}

std::string status_json(const SiteStatus& status) {
  List pages;
  for (const PageStatus& page : status.pages) {
    pages.emplace_back(Members{{"record", page.record},
                               {"page", page.page},
                               {"age", page.age},
                               {"late", page.late},
                               {"cut", page.cut},
                               {"next_run", page.next_run.word()},
                               {"reason", page.next_run.reason}});
  }
  Members members{{"fine", status.is_fine()}, {"pages", pages}, {"ending", status.ending}};
  for (const Metric& metric : kMetrics) {
    members.emplace_back(std::string(metric.name).substr(std::string_view("toplist_").size()),
                         metric.value(status));
  }
  members.emplace_back("running", status.running.has_value());
  return json_text(members);
}

std::string status_metrics(const SiteStatus& status) {
  constexpr std::string_view kAges = "toplist_page_age_seconds";
  std::string text = metric_head(kAges, "Age of a page.");
  std::set<std::string> listed;  // several toplists may have the same page
  for (const PageStatus& page : status.pages) {
    const std::string label = label_value(page.page);
    if (!page.age || !listed.insert(label).second) continue;
    text += fmt::format("{}{{page=\"{}\"}} {}\n", kAges, label, *page.age);
  }
  for (const Metric& metric : kMetrics) {
    text += metric_head(metric.name, metric.help);
    text += fmt::format("{} {}\n", metric.name, metric.value(status));
  }
  return text;
}

// --- the command ---

namespace {

struct Arguments {
  std::string site = ".";
  std::string user;
  std::optional<std::int64_t> max_age, max_thumbnail_age, since;
  bool pages_only = false;
  bool json = false;
  bool prometheus = false;
};

Expected<int> print_status(const Arguments& arguments) {
  if (auto entered = enter_site_and_say_so(arguments.site, arguments.user); !entered) {
    return tl::unexpected(entered.error());
  }
  StatusLimits limits{.log_span = arguments.since, .pages_only = arguments.pages_only};
  limits.page_age = arguments.max_age.value_or(limits.page_age);
  limits.thumbnail_age = arguments.max_thumbnail_age.value_or(limits.thumbnail_age);
  const SiteStatus status = status_of(SiteView(), limits, std::time(nullptr));
  const auto write = arguments.prometheus ? status_metrics
                     : arguments.json     ? status_json
                                          : status_text;
  return print(write(status), status.is_fine() ? 0 : kExitFindings);
}

}  // namespace

void add_status_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command = program.add_command("status", "Report whether the pages are up to date");
  command.footer(
      "Only reads the site. Exit status: 0 fine, 1 something is wrong, 2 could not check.\n"
      "Examples:\n"
      "  toplistctl status --site /srv/mysite --user www-data\n"
      "  toplistctl status --max-age 10m --prometheus");
  add_site_option(command, arguments->site);
  add_user_option(command, arguments->user);
  command.duration("--max-age", arguments->max_age,
                   "How old a page may be, such as 90s, 15m, 2h or 1d; 15m if not given");
  command.duration("--since", arguments->since,
                   "Read this span of the log; since the newest page if not given");
  command.duration("--max-thumbnail-age", arguments->max_thumbnail_age,
                   "How old a thumbnail may be before it counts as stale; 30d if not given");
  command.flag("--pages-only", arguments->pages_only,
               "Exit with 1 for faults of pages only, not for the log or a long run");
  const Option json = command.flag("--json", arguments->json, "JSON instead of text");
  command
      .flag("--prometheus", arguments->prometheus,
            "Metrics in the text format for node_exporter's textfile collector")
      .excludes(json);
  command.run([arguments] { return print_status(*arguments); });
}

}  // namespace toplist::ctl
