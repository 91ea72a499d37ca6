#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

#include "run/sys_log.h"
#include "toplistctl/commands.h"
#include "toplistctl/show/show.h"
#include "toplistctl/site_option.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = kCurrentDirectory;
  bool json = false;

  [[nodiscard]] Format format() const { return json ? Format::json : Format::table; }
};

int print_text(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  return 0;
}

/// Prints what `file` was read for; the exit status.
int print(const SiteFile& file, const std::string& text) {
  if (!file.is_open()) {
    std::fprintf(stderr, "toplistctl: cannot open %s: %s\n", file.path().c_str(),
                 std::generic_category().message(file.error()).c_str());
    return kCouldNotLook;
  }
  return print_text(text);
}

int trades(Format format) {
  const SiteData site;
  return print(site.trades_file, show_trades(site, format));
}

int toplists(Format format) {
  const SiteData site;
  return print(site.definitions_file, show_toplists(site, format));
}

int log(Format format) {
  const SiteFile file(kLogPath);
  if (file.error() == ENOENT && std::filesystem::is_directory("l/sys")) {
    return print_text(show_log("", format));  // nothing has failed yet
  }
  return print(file, show_log(file.text(), format));
}

struct Subject {
  const char* name;
  const char* description;
  int (*show)(Format format);
};
constexpr Subject kSubjects[] = {
    {"trades", "The trade database, record by record", trades},
    {"toplists", "How many trades each toplist would show, and what drops the others", toplists},
    {"log", "The system log in readable form", log},
};

void add_subject(CLI::App& show, const Subject& subject, int& exit_status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = show.add_subcommand(subject.name, subject.description);
  add_site_option(*command, arguments->site);
  command->add_flag("--json", arguments->json, "JSON instead of a table");
  command->callback([arguments, &exit_status, show_it = subject.show] {
    exit_status = enter_site(arguments->site) ? show_it(arguments->format()) : kCouldNotLook;
  });
}

}  // namespace

void add_show_command(CLI::App& app, int& exit_status) {
  CLI::App* show = app.add_subcommand("show", "Show what a site holds");
  show->require_subcommand(1);
  for (const Subject& subject : kSubjects) add_subject(*show, subject, exit_status);
}

}  // namespace toplist::ctl
