#include <CLI/CLI.hpp>
#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include "run/statistics.h"
#include "toplistctl/commands.h"
#include "toplistctl/commands/export/toplist_export.h"
#include "toplistctl/lib/command_line/site_option.h"
#include "toplistctl/lib/formats/figures_csv.h"
#include "toplistctl/lib/formats/histories.h"
#include "toplistctl/lib/formats/trades_csv.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/site_file.h"

namespace toplist::ctl {
namespace {

int cannot_open(const std::string& path, int error) { return fail("cannot open " + path, error); }

int trades() {
  std::vector<TradeRecord> records;
  if (!load_trades(kTradesPath, records)) return cannot_open(kTradesPath, errno);
  const SiteFile columns(kExtraColumnsPath);
  if (!columns.is_open()) return cannot_open(columns.path(), columns.error());
  return print(export_trades(records, columns.text()));
}

int figures() {
  std::vector<TradeRecord> records;
  if (!load_trades(kTradesPath, records)) return cannot_open(kTradesPath, errno);
  const SiteFile sum(kSumPath);
  if (!sum.is_open()) return cannot_open(sum.path(), sum.error());
  HistoryFiles histories;
  const std::string csv =
      export_figures(records, sum.text(),
                     [&histories](std::string_view domain) { return histories.totals(domain); });
  if (histories.error() != 0) return cannot_open(histories.unopened(), histories.error());
  return print(csv);
}

struct ToplistArguments {
  std::string site = kCurrentDirectory;
  std::string name;  ///< of a template or page
  bool json = false;
};

int toplist_rows(const ToplistArguments& arguments) {
  if (!enter_or_fail(arguments.site)) return kExitTrouble;
  const SiteFile definitions(kDefinitionsPath);
  if (!definitions.is_open()) return cannot_open(definitions.path(), definitions.error());
  const SiteView site;
  const ToplistView* toplist = site.find(arguments.name);
  if (toplist == nullptr) {
    return fail(std::string(kDefinitionsPath) + " has no toplist with the template or page " +
                arguments.name);
  }
  if (!toplist->next_run.is_built()) {
    warn("the next run does not write " + toplist->definition->output_path + ": " +
         toplist->next_run.text());
  }
  return print(export_toplist(*toplist, arguments.json ? Format::json : Format::csv));
}

void add_toplist(CLI::App& app, int& exit_status) {
  const auto arguments = std::make_shared<ToplistArguments>();
  CLI::App* command = app.add_subcommand("toplist", "The ranked trades that a toplist shows now");
  add_site_option(*command, arguments->site);
  command->add_option("template", arguments->name, "A name as in the definitions, or a page's path")
      ->type_name("TEMPLATE")
      ->required();
  command->add_flag("--json", arguments->json, "JSON instead of CSV");
  command->footer(
      "Examples:\n"
      "  toplistctl export toplist index.tpl | head -11 >top10.csv\n"
      "  toplistctl export toplist --json index.tpl");
  command->callback([arguments, &exit_status] { exit_status = toplist_rows(*arguments); });
}

struct Subject {
  const char* name;
  const char* description;
  int (*print)();
};
constexpr Subject kSubjects[] = {
    {"trades", "A line for each trade: the record and its texts", trades},
    {"figures", "A line for each trade and period", figures},
};

void add_subject(CLI::App& app, const Subject& subject, int& exit_status) {
  const auto site = std::make_shared<std::string>(kCurrentDirectory);
  CLI::App* command = app.add_subcommand(subject.name, subject.description);
  add_site_option(*command, *site);
  command->footer(std::string("Example:\n  toplistctl export ") + subject.name +
                  " --site /srv/mysite >" + subject.name + ".csv");
  command->callback([site, &exit_status, print_it = subject.print] {
    exit_status = enter_or_fail(*site) ? print_it() : kExitTrouble;
  });
}

}  // namespace

void add_export_command(CLI::App& app, int& exit_status) {
  CLI::App* command = app.add_subcommand("export", "Print a site's data as CSV");
  command->require_subcommand(1);
  for (const Subject& subject : kSubjects) add_subject(*command, subject, exit_status);
  add_toplist(*command, exit_status);
}

}  // namespace toplist::ctl
