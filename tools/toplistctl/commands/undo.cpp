#include <fmt/core.h>

#include <memory>
#include <string>

#include "toplistctl/commands.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/site_change.h"
#include "toplistctl/lib/site_files/site_root.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = ".";
  bool force = false;
};

Expected<int> undo(const Arguments& arguments) {
  const auto undone =
      enter_site(arguments.site).and_then([&] { return undo_last_change(arguments.force); });
  if (!undone) return tl::unexpected(undone.error());
  if (!*undone) return print("There is no change to undo.\n", kExitFindings);
  std::string text =
      fmt::format("Undone: {}. These files are as they were before:\n", (*undone)->change);
  for (const std::string& file : (*undone)->files) text += fmt::format("  {}\n", file);
  return print(text);
}

}  // namespace

void add_undo_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command = program.add_command("undo", "Take back the last change");
  add_site_option(command, arguments->site);
  command.flag("--force", arguments->force, "Undo even if files have changed since");
  command.footer(
      "Example:\n  toplistctl undo --site /srv/mysite\n"
      "Exit status: 0 undone, 1 there is nothing to undo, 2 not done.");
  command.run([arguments] { return undo(*arguments); });
}

}  // namespace toplist::ctl
