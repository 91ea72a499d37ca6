#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <memory>

#include "toplistctl/commands.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/commands/check/report.h"
#include "toplistctl/commands/check/selection.h"
#include "toplistctl/lib/command_line/site_option.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/output/console.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = kCurrentDirectory;
  std::string user;
  Wanted wanted;
  bool all = false;
  bool json = false;
  std::string program_path = kCronPath;
};

int check(const Arguments& arguments) {
  if (!enter_or_fail(arguments.site, arguments.user)) return kExitTrouble;
  const SiteView site;
  const Selection told = select(check_site(site, arguments.program_path), arguments.wanted);
  const std::string text =
      arguments.json ? check_json(told)
                     : check_text(site, told, arguments.all ? Repeats::all : Repeats::few);
  return print(text, told.findings.empty() ? 0 : kExitFindings);
}

/// The names of the entries of a table, for a message.
template <typename Table, typename NameOf>
std::string listed(const Table& table, NameOf name_of) {
  std::string text;
  for (const auto& entry : table) text += (text.empty() ? "" : ", ") + std::string(name_of(entry));
  return text;
}

/// Finds the entry of this name; CLI11 tells of one that is not there.
template <typename Table, typename NameOf>
auto find_named(const Table& table, const std::string& name, const char* what, NameOf name_of) {
  const auto found = std::find_if(table.begin(), table.end(),
                                  [&](const auto& entry) { return name_of(entry) == name; });
  if (found != table.end()) return found;
  throw CLI::ValidationError(std::string(what) + " " + in_quotes(name) + " is none of " +
                             listed(table, name_of));
}

void add_selection_options(CLI::App& command, Wanted& wanted) {
  command
      .add_option_function<std::string>(
          "--min-effect",
          [&wanted](const std::string& word) {
            const auto found = find_named(kEffects, word, "effect",
                                          [](const EffectName& effect) { return effect.word; });
            wanted.min_effect = static_cast<Effect>(std::distance(kEffects.begin(), found));
          },
          "Only what is at least as grave: " +
              listed(kEffects, [](const EffectName& effect) { return effect.word; }) +
              "; \"lose\" if not given")
      ->type_name("EFFECT");
  command
      .add_option_function<std::vector<std::string>>(
          "--ignore",
          [&wanted](const std::vector<std::string>& names) {
            for (const std::string& name : names) {
              wanted.ignored.push_back(*find_named(kinds::kAll, name, "kind",
                                                   [](const Kind* kind) { return kind->name; }));
            }
          },
          "Leave out this kind of finding, as it is meant; may be repeated")
      ->type_name("KIND")
      ->allow_extra_args(false);
}

}  // namespace

void add_check_command(CLI::App& app, int& exit_status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command =
      app.add_subcommand("check", "Tell what makes a run log, skip, stop or show things wrong");
  command->footer(
      "The site is only read. Exit status: 0 clean, 1 something found, 2 not checked.\n"
      "Run it as the user who runs toplist, who may see and write other files.\n"
      "Example: toplistctl check --ignore build-mode --min-effect skip");
  add_site_option(*command, arguments->site);
  add_user_option(*command, arguments->user);
  add_selection_options(*command, arguments->wanted);
  command->add_flag("--all", arguments->all, "Every finding of a kind, not only the first few");
  command->add_flag("--json", arguments->json, "Diagnostics as JSON, always all");
  command
      ->add_option("--path", arguments->program_path,
                   "Where the scheduler looks for downloader and image tool; cron's own by default")
      ->type_name("PATH");
  command->callback([arguments, &exit_status] { exit_status = check(*arguments); });
}

}  // namespace toplist::ctl
