// toplistctl: what a site's operator needs besides the run itself.

#include <array>
#include <exception>

#include "toplistctl/commands.h"
#include "toplistctl/lib/command_line/command_line.h"
#include "toplistctl/lib/output/console.h"

namespace {

using namespace toplist::ctl;

template <void (*kAdd)(CLI::App&, int&)>
void bridge(const Command& command) {
  kAdd(*command.app(), *command.exit_status());
}

constexpr std::array<void (*)(const Command&), 14> kCommands{
    bridge<add_check_command>,  bridge<add_status_command>, bridge<add_show_command>,
    bridge<add_render_command>, bridge<add_why_command>,    bridge<add_harvest_command>,
    bridge<add_digest_command>, bridge<add_expand_command>, bridge<add_export_command>,
    bridge<add_import_command>, bridge<add_sample_command>, bridge<add_init_command>,
    add_record_command,         add_complete_command};

}  // namespace

int main(int argc, char** argv) {
  survive_broken_pipes();
  try {
    return run_command_line(argc, argv, "Companion of the toplist builder",
                            "toplistctl " TOPLIST_VERSION, kCommands);
  } catch (const std::exception& error) {
    return fail(error.what());
  }
}
