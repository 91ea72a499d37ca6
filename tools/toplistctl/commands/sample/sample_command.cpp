#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <memory>
#include <string>

#include "run/trade_record.h"
#include "toplistctl/commands.h"
#include "toplistctl/commands/sample/sample_site.h"
#include "toplistctl/lib/output/console.h"

namespace toplist::ctl {
namespace {

constexpr std::size_t kMostTrades = 1'000'000;
constexpr std::size_t kMostToplists = 999;

struct Arguments {
  std::string directory;
  site::SampleOptions options;
  bool no_pictures = false;
};

int write_sample(const Arguments& arguments) {
  site::SampleOptions options = arguments.options;
  if (arguments.no_pictures) options.thumbnails = site::Thumbnails::none;
  if (!options.partner_pages.empty()) options.thumbnails = site::Thumbnails::harvested;
  const std::string problem = site::write_sample_site(arguments.directory, options);
  if (!problem.empty()) return fail(problem);
  return print(arguments.directory + ": a sample site of " + std::to_string(options.trades) +
               " trades and " + std::to_string(options.toplists) + " toplists\n");
}

/// The conversion of CLI11 takes "-1" for the largest number.
std::string check_unsigned(const std::string& text) {
  const bool digits =
      std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
  return digits ? "" : text + " is not a whole number from 0 on";
}

}  // namespace

void add_sample_command(CLI::App& app, int& exit_status) {
  // Shared with the callback, which runs when this function has returned.
  const auto arguments = std::make_shared<Arguments>();
  site::SampleOptions& options = arguments->options;
  CLI::App* command = app.add_subcommand("sample", "Lay out a complete site of invented trades");
  command->footer(
      "Examples:\n"
      "  toplistctl sample /tmp/mysite\n"
      "  toplistctl sample /tmp/large --trades 10000 --toplists 20 --plain --no-pictures\n"
      "Exit status: 0 laid out, 2 not done.");
  command->add_option("directory", arguments->directory, "Empty, new, or a sample site already")
      ->type_name("DIR")
      ->required();
  command->add_option("--trades", options.trades, "Records in the trade database")
      ->capture_default_str()
      ->check(CLI::Range(kFewestTrades, kMostTrades));
  command->add_option("--toplists", options.toplists, "Five designed pages, then plain tables")
      ->capture_default_str()
      ->check(CLI::Range(std::size_t{1}, kMostToplists));
  command->add_option("--seed", options.seed, "The same seed gives the same site")
      ->capture_default_str()
      ->check(check_unsigned);
  command->add_flag("--plain", options.plain,
                    "Plain tables of 1,000 tags only, as the benches measure them");
  command->add_flag("--no-pictures", arguments->no_pictures,
                    "Leave out the thumbnails and do not require them");
  command
      ->add_option("--harvest", options.partner_pages,
                   "Leave the thumbnails to the run's harvest, and write the partners' pages into "
                   "this folder, for a proxy on this machine to serve")
      ->type_name("FOLDER")
      ->excludes("--no-pictures");
  command->add_flag("--replace", options.replace,
                    "Also over a sample that has been changed since it was laid out");
  command->callback([arguments, &exit_status] { exit_status = write_sample(*arguments); });
}

}  // namespace toplist::ctl
