#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "toplistctl/commands.h"
#include "toplistctl/commands/why/report.h"
#include "toplistctl/lib/command_line/site_option.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/site_file.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = kCurrentDirectory;
  std::string trade;
  std::string toplist;
  bool json = false;
};

bool is_shown_everywhere(const Account& account) {
  return std::all_of(account.toplists.begin(), account.toplists.end(),
                     [](const Standing& standing) { return standing.is_shown(); });
}

int why(const Arguments& arguments) {
  if (!enter_or_fail(arguments.site)) return kExitTrouble;
  const SiteFile trades(kTradesPath);
  if (!trades.is_open()) return fail("cannot open " + trades.path(), trades.error());

  const SiteView site;
  const std::vector<Account> accounts = accounts_of(site, arguments.trade, arguments.toplist);
  if (accounts.empty()) {
    return fail(trades.path() + " has no trade of the number or domain " + arguments.trade);
  }
  if (!arguments.toplist.empty() && accounts.front().toplists.empty()) {
    return fail(std::string(kDefinitionsPath) + " has no toplist with the template or page " +
                arguments.toplist);
  }
  if (!site.rehearsal.ending().empty()) warn("the next run ends early: " + site.rehearsal.ending());
  const std::string text = arguments.json ? why_json(accounts) : why_text(site, accounts);
  const bool shown = std::all_of(accounts.begin(), accounts.end(), is_shown_everywhere);
  return print(text, shown ? 0 : kExitFindings);
}

}  // namespace

void add_why_command(CLI::App& app, int& exit_status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command =
      app.add_subcommand("why", "Tell why a trade stands where it stands, or nowhere");
  command->footer(
      "The site is only read. Exit status: 0 it is shown in every toplist, 1 in some it is not, 2 "
      "not looked.\n"
      "Examples:\n"
      "  toplistctl why alpine-trails.example\n"
      "  toplistctl why 101 --toplist index.tpl --json");
  add_site_option(*command, arguments->site);
  command->add_option("trade", arguments->trade, "A trade's number or domain")
      ->type_name("TRADE")
      ->required();
  command
      ->add_option("--toplist", arguments->toplist,
                   "Only this one: a name as in the definitions, or a page's path")
      ->type_name("TEMPLATE");
  command->add_flag("--json", arguments->json, "JSON instead of text");
  command->callback([arguments, &exit_status] { exit_status = why(*arguments); });
}

}  // namespace toplist::ctl
