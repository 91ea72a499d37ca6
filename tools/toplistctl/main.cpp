// toplistctl: what a site's operator needs besides the run itself.

#include <exception>
#include <string>
#include <vector>

#include "toplistctl/commands.h"
#include "toplistctl/output/console.h"

namespace {

using namespace toplist::ctl;

constexpr auto kCommands = {add_check_command,   add_status_command, add_show_command,
                            add_render_command,  add_why_command,    add_harvest_command,
                            add_digest_command,  add_expand_command, add_export_command,
                            add_import_command,  add_sample_command, add_init_command,
                            add_complete_command};

/// Adds --version to the command and to all below it.
void add_version_flag(CLI::App& app) {
  app.set_version_flag("--version", "toplistctl " TOPLIST_VERSION);
  for (CLI::App* command : app.get_subcommands({})) add_version_flag(*command);
}

/// CLI11 tells what is missing or does not go together, but not of the mistyped word that is the
/// cause.
int fail_for_words(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> unknown = app.remaining(true);
  if (unknown.empty()) return fail(std::string(error.what()) + "; see --help");
  return fail("there is no command or option \"" + unknown.front() + "\"; see --help");
}

int run(int argc, char** argv) {
  CLI::App app("Companion of the toplist builder");
  app.require_subcommand(1);
  int exit_status = 0;
  for (const auto add_command : kCommands) add_command(app, exit_status);
  add_version_flag(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::RequiredError& error) {
    return fail_for_words(app, error);
  } catch (const CLI::ExcludesError& error) {
    return fail_for_words(app, error);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kCouldNotLook;  // 0: help or version
  }
  return exit_status;
}

}  // namespace

int main(int argc, char** argv) {
  survive_broken_pipes();
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    return fail(error.what());
  }
}
