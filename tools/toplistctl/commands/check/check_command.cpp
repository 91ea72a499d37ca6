#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <memory>

#include "toplistctl/commands.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/commands/check/selection.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/diagnostics/report.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/site_root.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = ".";
  std::string user;
  std::string min_effect{effect_name(Effect::lose).word};
  std::vector<std::string> ignored;
  bool all = false;
  bool json = false;
  std::string program_path = kCronPath;
};

Expected<const Kind*> kind_named(const std::string& name) {
  const auto& all = kinds::all();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Kind* kind) { return kind->name == name; });
  if (found != all.end()) return *found;
  return failure(
      fmt::format("there is no kind of finding \"{}\". The column KIND shows the names", name));
}

Expected<Wanted> wanted_of(const Arguments& arguments) {
  const auto effect = std::find_if(kEffects.begin(), kEffects.end(), [&](const EffectName& name) {
    return name.word == arguments.min_effect;
  });
  Wanted wanted{.min_effect = static_cast<Effect>(std::distance(kEffects.begin(), effect))};
  for (const std::string& name : arguments.ignored) {
    const auto kind = kind_named(name);
    if (!kind) return tl::unexpected(kind.error());
    wanted.ignored.push_back(*kind);
  }
  return wanted;
}

std::string text_of(const SiteView& site, const Selection& selection, Repeats repeats) {
  std::string text =
      selection.findings.empty()
          ? fmt::format("Nothing found: {}, {} of them active, and {}.\n",
                        count_of(site.run.trades.size(), "trade"), site.run.rows.size(),
                        count_of(site.toplists.size(), "toplist"))
          : diagnostics_table(selection.findings, repeats);
  if (selection.hidden > 0) {
    text += fmt::format("Hidden: {}. --min-effect note shows all.\n",
                        count_of(selection.hidden, "less serious finding"));
  }
  return text;
}

std::string json_of(const Selection& selection) {
  return json_text(Members{{"clean", selection.findings.empty()},
                           {"hidden", selection.hidden},
                           {"findings", diagnostics_value(selection.findings)}});
}

Expected<int> check(const Arguments& arguments) {
  const auto wanted = wanted_of(arguments);
  if (!wanted) return tl::unexpected(wanted.error());
  if (auto entered = enter_site_and_say_so(arguments.site, arguments.user); !entered) {
    return tl::unexpected(entered.error());
  }
  const SiteView site;
  const Selection selection = select(check_site(site, arguments.program_path), *wanted);
  return print(arguments.json
                   ? json_of(selection)
                   : text_of(site, selection, arguments.all ? Repeats::all : Repeats::few),
               selection.findings.empty() ? 0 : kExitFindings);
}

}  // namespace

void add_check_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command =
      program.add_command("check", "Report what is wrong with a site, and what to do");
  command.footer(
      "Only reads the site. Exit status: 0 nothing found, 1 findings, 2 could not check.\n"
      "Run it as the user that runs toplist, or as root, which then acts as the site's owner.\n"
      "Example: toplistctl check --ignore build-mode --min-effect skip");
  add_site_option(command, arguments->site);
  add_user_option(command, arguments->user);
  std::vector<std::string> effects;
  std::string list;
  for (const EffectName& effect : kEffects) {
    list += (list.empty() ? "" : ", ") + effects.emplace_back(effect.word);
  }
  command.choice("--min-effect", "EFFECT", arguments->min_effect, effects,
                 "Report only findings at least this serious: " + list + "; lose if not given");
  command.texts("--ignore", "KIND", arguments->ignored,
                "Ignore findings of this kind; may be repeated");
  command.flag("--all", arguments->all, "List every finding of a kind, not only the first few");
  command.flag("--json", arguments->json, "JSON instead of tables, with every finding");
  command.text("--path", "PATH", arguments->program_path,
               "Where the scheduler looks for the downloader and the image tool; cron's default "
               "if not given");
  command.run([arguments] { return check(*arguments); });
}

}  // namespace toplist::ctl
