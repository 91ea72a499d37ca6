// toplistctl: what a site's operator needs besides the run itself.

#include <cstdio>
#include <exception>

#include "toplistctl/commands.h"

namespace {

constexpr auto kCommands = {toplist::ctl::add_sample_command};

int run(int argc, char** argv) {
  CLI::App app("Companion of the toplist builder");
  app.set_version_flag("--version", "toplistctl " TOPLIST_VERSION);
  app.require_subcommand(1);
  int exit_status = 0;
  for (const auto add_command : kCommands) add_command(app, exit_status);
  CLI11_PARSE(app, argc, argv);
  return exit_status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "toplistctl: %s\n", error.what());
    return 1;
  }
}
