#include <CLI/CLI.hpp>
#include <cerrno>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "toplistctl/commands.h"
#include "toplistctl/commands/try_harvest/explain.h"
#include "toplistctl/lib/command_line/site_option.h"
#include "toplistctl/lib/output/console.h"
#include "util/file.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = kCurrentDirectory;
  std::string trade;
};

/// The first trade of this domain or, in the digits of a plain number, id.
std::optional<std::size_t> find_trade(const std::vector<TradeRecord>& trades,
                                      const std::string& name) {
  for (std::size_t i = 0; i < trades.size(); ++i) {
    if (domain_of(trades[i]) == name || std::to_string(trades[i].trade_id) == name) return i;
  }
  return std::nullopt;
}

int explain(const Arguments& arguments) {
  if (!enter_or_fail(arguments.site)) return kExitTrouble;
  std::vector<TradeRecord> trades;
  if (!load_trades(kTradesPath, trades))
    return fail(std::string("cannot open ") + kTradesPath, errno);
  FileBuffer file;
  if (!file.read(kHarvestConfigPath)) {
    return fail(std::string("cannot open ") + kHarvestConfigPath, errno);
  }
  const auto index = find_trade(trades, arguments.trade);
  if (!index) return fail("no trade has the domain or number " + arguments.trade);

  Connections held_open;
  const RawGet get = [&held_open](const std::string& host, const std::string& url) {
    return get_raw_http(host, url, held_open);
  };
  int status = 0;
  const Tell tell = [&status](const std::string& line) {
    if (status == 0) status = print(line + "\n");
  };
  const bool stored =
      explain_harvest(trades, *index, parse_harvest_config(file.text(), ""), get, tell);
  if (status != 0) return status;
  return stored ? 0 : kExitFindings;
}

}  // namespace

void add_harvest_command(CLI::App& app, int& exit_status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command =
      app.add_subcommand("harvest", "Tell what a harvest makes of a trade's page and pictures");
  command->footer(
      "The page and its pictures are fetched as by a run; nothing is stored.\n"
      "Exit status: 0 a picture would be stored, 1 none would, 2 not tried.\n"
      "Example: toplistctl harvest --site /srv/mysite --explain tea.example");
  add_site_option(*command, arguments->site);
  command->add_option("--explain", arguments->trade, "A trade's domain or number")
      ->type_name("TRADE")
      ->required();
  command->callback([arguments, &exit_status] { exit_status = explain(*arguments); });
}

}  // namespace toplist::ctl
