#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>

#include "run/statistics.h"
#include "run/sys_log.h"
#include "toplistctl/commands.h"
#include "toplistctl/commands/show/show.h"
#include "toplistctl/lib/command_line/site_option.h"
#include "toplistctl/lib/formats/log_lines.h"
#include "toplistctl/lib/formats/order_names.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/site_file.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = kCurrentDirectory;
  bool json = false;
  bool csv = false;
  FiguresWanted figures;
  std::string period{kPeriodNames[kPeriod24]};
  std::string sort_key;
  std::optional<std::int64_t> since;  ///< seconds
  bool summary = false;

  [[nodiscard]] Format format() const {
    if (csv) return Format::csv;
    return json ? Format::json : Format::table;
  }
};

/// Prints what `path` was read for; the exit status.
int print_read(const char* path, const std::string& text) {
  const SiteFile file(path);
  return file.is_open() ? print(text) : fail("cannot open " + file.path(), file.error());
}

int trades(const Arguments& arguments) {
  const std::array<Step, 1> step{load_trade_set};
  const SiteView site(step);
  return print_read(kTradesPath, show_trades(site, arguments.format()));
}

int figures(const Arguments& arguments) {
  const std::array<Step, 4> steps{load_trade_set, build_row_set, add_histories,
                                  read_recent_figures};
  SiteView site(steps);
  FiguresWanted wanted = arguments.figures;
  const auto* const period = std::find(kPeriodNames.begin(), kPeriodNames.end(), arguments.period);
  wanted.period = static_cast<Period>(period - kPeriodNames.begin());
  if (!arguments.sort_key.empty()) wanted.order_by = *order_value_named(arguments.sort_key);
  return print_read(kSumPath, show_figures(site, wanted, arguments.format()));
}

int toplists(const Arguments& arguments) {
  const SiteView site;
  return print_read(kDefinitionsPath, show_toplists(site, arguments.format()));
}

int log(const Arguments& arguments) {
  const SiteFile file(kLogPath);
  const bool not_there_yet =
      file.error() == ENOENT && std::filesystem::is_directory(kLogFolder);  // nothing has failed
  if (!file.is_open() && !not_there_yet) return fail("cannot open " + file.path(), file.error());
  std::vector<LogLine> lines = read_log(file.text());
  if (arguments.since) {
    lines = lines_since(std::move(lines), std::time(nullptr) - *arguments.since);
  }
  const Records records = arguments.summary ? log_summary(lines) : log_records(lines);
  return print(records.text(arguments.format()));
}

void add_no_options(CLI::App& /*command*/, Arguments& /*arguments*/) {}

void add_figures_options(CLI::App& command, Arguments& arguments) {
  command.add_option("--period", arguments.period, "24 if not given")
      ->check(CLI::IsMember(std::vector<std::string>(kPeriodNames.begin(), kPeriodNames.end())))
      ->type_name("PERIOD");
  command
      .add_option("--sort", arguments.sort_key,
                  "Order by this value: its number, 1 to 60, or name, such as rin24, clk24/rin24 "
                  "or further1_24")
      ->type_name("KEY")
      ->check([](const std::string& key) {
        return order_value_named(key) ? std::string() : "no order-by value \"" + key + '"';
      });
  command.add_option("--top", arguments.figures.top, "Only so many of the first")
      ->type_name("N")
      ->check(CLI::PositiveNumber);
}

void add_log_options(CLI::App& command, Arguments& arguments) {
  add_duration_option(command, "--since", arguments.since,
                      "Only the lines of this span, up to now");
  command.add_flag("--summary", arguments.summary,
                   "One row per kind of line: count, first and last");
}

struct Subject {
  const char* name;
  const char* description;
  int (*show)(const Arguments& arguments);
  void (*add_options)(CLI::App& command, Arguments& arguments);
  const char* example;
};
constexpr Subject kSubjects[] = {
    {"trades", "The trade database, record by record", trades, add_no_options,
     "toplistctl show trades --csv"},
    {"figures", "The figures of the active trades in one period", figures, add_figures_options,
     "toplistctl show figures --period 24 --sort clk24/rin24 --top 20"},
    {"toplists", "How many trades each toplist would show, and what drops the others", toplists,
     add_no_options, "toplistctl show toplists --json"},
    {"log", "The system log in readable form", log, add_log_options,
     "toplistctl show log --since 1d --summary"},
};

void add_subject(CLI::App& show, const Subject& subject, int& exit_status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = show.add_subcommand(subject.name, subject.description);
  add_site_option(*command, arguments->site);
  CLI::Option* json = command->add_flag("--json", arguments->json, "JSON instead of a table");
  command->add_flag("--csv", arguments->csv, "CSV instead of a table")->excludes(json);
  subject.add_options(*command, *arguments);
  command->footer(std::string("Example: ") + subject.example);
  command->callback([arguments, &exit_status, show_it = subject.show] {
    exit_status = enter_or_fail(arguments->site) ? show_it(*arguments) : kExitTrouble;
  });
}

}  // namespace

void add_show_command(CLI::App& app, int& exit_status) {
  CLI::App* show = app.add_subcommand("show", "Show what a site holds");
  show->require_subcommand(1);
  for (const Subject& subject : kSubjects) add_subject(*show, subject, exit_status);
}

}  // namespace toplist::ctl
