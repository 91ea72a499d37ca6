#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "sample/partner_pages.h"
#include "sample/sample_site.h"
#include "toplistctl/commands.h"

namespace toplist::ctl {
namespace {

/// A run takes a database of fewer records for one that was not fully loaded.
constexpr std::size_t kFewestTrades = 10;
constexpr std::size_t kMostTrades = 1'000'000;
constexpr std::size_t kMostToplists = 999;

struct Arguments {
  std::string directory;
  site::SampleOptions options;
  bool plain = false;
  bool no_pictures = false;
  std::string partner_pages;  ///< empty: none
};

int write_sample(const Arguments& arguments) {
  const std::filesystem::path directory = arguments.directory;
  if (!site::may_hold_sample_site(directory)) {
    std::fprintf(stderr, "toplistctl: %s is neither an empty directory nor a sample site\n",
                 directory.c_str());
    return 1;
  }
  site::SampleOptions options = arguments.options;
  if (arguments.plain) options.most_designed = 0;
  if (arguments.no_pictures) options.thumbnails = site::Thumbnails::none;
  if (!arguments.partner_pages.empty()) options.thumbnails = site::Thumbnails::harvested;
  std::filesystem::path failed = site::write_sample_site(directory, options);
  if (failed.empty() && !arguments.partner_pages.empty()) {
    failed = site::write_partner_pages(arguments.partner_pages, options);
  }
  if (!failed.empty()) {
    std::fprintf(stderr, "toplistctl: cannot write %s\n", failed.c_str());
    return 1;
  }
  std::printf("%s: a sample site of %zu trades and %zu toplists\n", directory.c_str(),
              options.trades, options.toplists);
  return 0;
}

}  // namespace

void add_sample_command(CLI::App& app, int& exit_status) {
  // Shared with the callback, which runs when this function has returned.
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("sample", "Lay out a complete site of invented trades");
  command->add_option("directory", arguments->directory, "Empty, new, or a sample site already")
      ->required();
  command->add_option("--trades", arguments->options.trades, "Records in the trade database")
      ->capture_default_str()
      ->check(CLI::Range(kFewestTrades, kMostTrades));
  command
      ->add_option("--toplists", arguments->options.toplists,
                   "Five designed pages, then plain tables")
      ->capture_default_str()
      ->check(CLI::Range(std::size_t{1}, kMostToplists));
  command->add_option("--seed", arguments->options.seed, "The same seed gives the same site")
      ->capture_default_str();
  command->add_flag("--plain", arguments->plain,
                    "Plain tables of 1,000 tags only, as the benches measure them");
  command->add_flag("--no-pictures", arguments->no_pictures,
                    "Leave out the thumbnails and do not require them");
  command
      ->add_option("--harvest", arguments->partner_pages,
                   "Leave the thumbnails to the run's harvest, and write the partners' pages into "
                   "this folder, for a proxy on this machine to serve")
      ->excludes("--no-pictures");
  command->callback([arguments, &exit_status] { exit_status = write_sample(*arguments); });
}

}  // namespace toplist::ctl
