#include "toplistctl/site_option.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <map>

#include "toplistctl/output/console.h"

namespace toplist::ctl {
namespace {

/// False, told, when the user is not known or this process may not become another.
bool become(const std::string& user) {
  const passwd* const entry = ::getpwnam(user.c_str());
  if (entry == nullptr) {
    fail("there is no user " + user);
    return false;
  }
  if (entry->pw_uid == ::geteuid()) return true;
  if (::initgroups(user.c_str(), entry->pw_gid) == 0 &&
      ::setresgid(entry->pw_gid, entry->pw_gid, entry->pw_gid) == 0 &&
      ::setresuid(entry->pw_uid, entry->pw_uid, entry->pw_uid) == 0) {
    return true;
  }
  fail("cannot look as " + user, errno);
  return false;
}

}  // namespace

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

bool enter_site(const std::string& directory, const std::string& user) {
  if (!user.empty() && !become(user)) return false;
  if (::chdir(directory.c_str()) == 0) return true;
  fail("cannot enter " + directory, errno);
  return false;
}

}  // namespace toplist::ctl
