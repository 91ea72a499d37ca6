#include "toplistctl/lib/command_line/site_option.h"

#include <map>

#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/site_root.h"

namespace toplist::ctl {
CLI::Option* add_site_option(CLI::App& command, std::string& directory) {
  return command
      .add_option("--site", directory, "The site's root, instead of the current directory")
      ->type_name("DIR");
}

void add_user_option(CLI::App& command, std::string& user) {
  command.add_option("--user", user, "As root: look as this user, the one who runs toplist")
      ->type_name("NAME");
}

CLI::Option* add_duration_option(CLI::App& command, const std::string& name,
                                 std::optional<std::int64_t>& seconds, const std::string& about) {
  const std::map<std::string, std::int64_t> units{{"s", 1}, {"m", 60}, {"h", 3600}, {"d", 86400}};
  return command.add_option(name, seconds, about)
      ->transform(CLI::AsNumberWithUnit(
                      units, CLI::AsNumberWithUnit::Options(CLI::AsNumberWithUnit::CASE_SENSITIVE |
                                                            CLI::AsNumberWithUnit::UNIT_REQUIRED))
                      .description(""))
      ->check(CLI::NonNegativeNumber.description(""))
      ->type_name("DURATION");
}

bool enter_or_fail(const std::string& directory, const std::string& user) {
  const auto entered = enter_site(directory, user);
  if (!entered) fail(entered.error().text());
  return entered.has_value();
}

}  // namespace toplist::ctl
