#include "toplistctl/lib/report/report.h"

#include <filesystem>
#include <memory>

#include "toplistctl/commands.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/new_file.h"
#include "toplistctl/lib/site_files/site_root.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = ".";
  std::string user;
  std::string output;
  std::string history;
  std::size_t top = ReportOptions().top;
};

/// The same file after the working directory has changed.
std::string absolute(const std::string& path) {
  return path.empty() ? path : std::filesystem::absolute(path).string();
}

Expected<int> report(const Arguments& arguments) {
  const std::string output = absolute(arguments.output);
  const std::string history = absolute(arguments.history);
  return enter_site_and_say_so(arguments.site, arguments.user)
      .and_then([&] { return report_page({.top = arguments.top, .history = history}); })
      .and_then([&](const std::string& page) -> Expected<int> {
        if (arguments.output == "-") return print(page);
        return replace_file(output, page).map([] { return 0; });
      });
}

}  // namespace

void add_report_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command = program.add_command("report", "Write a page about the site's traffic");
  command.footer(
      "Only reads the site. Exit status: 0 written, 2 not written.\n"
      "Examples:\n"
      "  toplistctl report --output /tmp/report.html\n"
      "  toplistctl report --site /srv/mysite --top 20 --output - >/tmp/report.html");
  add_site_option(command, arguments->site);
  add_user_option(command, arguments->user);
  command
      .text("--output", "FILE", arguments->output,
            "The page, replaced in one step; \"-\" for standard output")
      .required();
  command.number("--top", "N", arguments->top, 0,
                 "How many partners get a picture and a section; 100 if not given");
  command.text("--history", "FILE", arguments->history,
               "The database of toplistctl record, instead of the site's own one");
  command.run([arguments] { return report(*arguments); });
}

}  // namespace toplist::ctl
