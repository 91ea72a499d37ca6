#include <memory>

#include "toplistctl/check/check.h"
#include "toplistctl/check/report.h"
#include "toplistctl/commands.h"
#include "toplistctl/output/console.h"
#include "toplistctl/site_option.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = kCurrentDirectory;
  std::string user;
  bool json = false;
  std::string program_path = kCronPath;
};

int check(const Arguments& arguments) {
  if (!enter_site(arguments.site, arguments.user)) return kCouldNotLook;
  const SiteView site;
  const Findings findings = check_site(site, arguments.program_path);
  const std::string text = arguments.json ? check_json(findings) : check_text(site, findings);
  return print(text, findings.empty() ? 0 : kFoundSomething);
}

}  // namespace

void add_check_command(CLI::App& app, int& exit_status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command =
      app.add_subcommand("check", "Tell what makes a run log, skip, stop or show things wrong");
  command->footer(
      "The site is only read. Exit status: 0 clean, 1 something found, 2 not checked.\n"
      "Run it as the user who runs toplist, who may see and write other files.");
  add_site_option(*command, arguments->site);
  add_user_option(*command, arguments->user);
  command->add_flag("--json", arguments->json, "Findings as JSON");
  command
      ->add_option("--path", arguments->program_path,
                   "Where the scheduler looks for downloader and image tool; cron's own by default")
      ->type_name("PATH");
  command->callback([arguments, &exit_status] { exit_status = check(*arguments); });
}

}  // namespace toplist::ctl
