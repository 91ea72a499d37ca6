#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "toplistctl/commands.h"
#include "toplistctl/commands/init/init_harvest.h"
#include "toplistctl/lib/new_site/empty_site.h"
#include "toplistctl/lib/output/console.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string directory;
  std::string harvested_site;  ///< empty: a site of its own
};

int init_site(const std::string& directory) {
  const std::string problem = site::write_empty_site(directory);
  if (!problem.empty()) return fail(problem);
  return print(directory + ": a site without trades and with one toplist, d/tl/index.tpl.src\n");
}

int init(const Arguments& arguments) {
  if (arguments.harvested_site.empty()) return init_site(arguments.directory);
  return init_harvest(arguments.harvested_site, arguments.directory);
}

}  // namespace

void add_init_command(CLI::App& app, int& exit_status) {
  // Shared with the callback, which runs when this function has returned.
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("init", "Lay out an empty site to fill");
  command->footer(std::string("An empty site:\n"
                              "  toplistctl init /srv/mysite\n") +
                  kInitHarvestExample);
  command->add_option("directory", arguments->directory, "New or empty")
      ->type_name("DIR")
      ->required();
  add_harvest_of_option(*command, arguments->harvested_site);
  command->callback([arguments, &exit_status] { exit_status = init(*arguments); });
}

}  // namespace toplist::ctl
