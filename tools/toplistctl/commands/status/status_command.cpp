#include <CLI/CLI.hpp>
#include <ctime>
#include <memory>

#include "toplistctl/commands.h"
#include "toplistctl/lib/command_line/site_option.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_view/status.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = kCurrentDirectory;
  std::string user;
  std::optional<std::int64_t> max_age, max_thumbnail_age, since;
  bool pages_only = false;
  bool json = false;
  bool prometheus = false;
};

int status(const Arguments& arguments) {
  if (!enter_or_fail(arguments.site, arguments.user)) return kExitTrouble;
  StatusLimits limits{.log_span = arguments.since, .pages_only = arguments.pages_only};
  if (arguments.max_age) limits.page_age = *arguments.max_age;
  if (arguments.max_thumbnail_age) limits.thumbnail_age = *arguments.max_thumbnail_age;

  const SiteView site;
  const SiteStatus status = status_of(site, limits, std::time(nullptr));
  const auto write = arguments.prometheus ? status_metrics
                     : arguments.json     ? status_json
                                          : status_text;
  return print(write(status), status.is_fine() ? 0 : kExitFindings);
}

}  // namespace

void add_status_command(CLI::App& app, int& exit_status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("status", "Tell whether the schedule is alive");
  command->footer(
      "The site is only read. Exit status: 0 fine, 1 anything is late or was logged, 2 could not "
      "look.\n"
      "Examples:\n"
      "  toplistctl status --site /srv/mysite --user www-data\n"
      "  toplistctl status --max-age 10m --prometheus");
  add_site_option(*command, arguments->site);
  add_user_option(*command, arguments->user);
  add_duration_option(*command, "--max-age", arguments->max_age,
                      "How old a page may be, such as 90s, 15m, 2h or 1d; 15m if not given");
  add_duration_option(*command, "--since", arguments->since,
                      "Look at this span of the log; since the newest page if not given");
  add_duration_option(*command, "--max-thumbnail-age", arguments->max_thumbnail_age,
                      "How old a thumbnail may be before it counts as stale; 30d if not given");
  command->add_flag("--pages-only", arguments->pages_only,
                    "Status 1 for late pages only, not for log lines or a long run");
  CLI::Option* json = command->add_flag("--json", arguments->json, "JSON instead of text");
  command
      ->add_flag("--prometheus", arguments->prometheus,
                 "Metrics in the text format for node_exporter's textfile collector")
      ->excludes(json);
  command->callback([arguments, &exit_status] { exit_status = status(*arguments); });
}

}  // namespace toplist::ctl
