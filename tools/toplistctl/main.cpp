// toplistctl: what a site's operator needs besides the run itself.

#include <array>
#include <exception>

#include "toplistctl/commands.h"
#include "toplistctl/lib/command_line/command_line.h"
#include "toplistctl/lib/output/console.h"

namespace {

using namespace toplist::ctl;

constexpr std::array<void (*)(const Command&), 18> kCommands{
    add_check_command,  add_status_command,  add_report_command, add_show_command,
    add_render_command, add_preview_command, add_why_command,    add_try_harvest_command,
    add_digest_command, add_expand_command,  add_export_command, add_import_command,
    add_set_command,    add_undo_command,    add_record_command, add_sample_command,
    add_init_command,   add_complete_command};

}  // namespace

int main(int argc, char** argv) {
  survive_failed_writes();
  try {
    return run_command_line(argc, argv, "Checks, shows and changes the sites of toplist",
                            "toplistctl " TOPLIST_VERSION, kCommands);
  } catch (const std::exception& error) {
    return fail(error.what());
  }
}
