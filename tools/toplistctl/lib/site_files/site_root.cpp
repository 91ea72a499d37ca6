#include "toplistctl/lib/site_files/site_root.h"

#include <fmt/core.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "toplistctl/lib/output/console.h"

namespace toplist::ctl {
namespace {

/// The user that this process becomes.
struct Identity {
  uid_t uid;
  gid_t gid;
  std::string name;  ///< empty when the system has no name for the user
};

Expected<Identity> identity_of(const std::string& user) {
  const passwd* const entry = ::getpwnam(user.c_str());
  if (entry == nullptr) return failure(fmt::format("there is no user {}", user));
  return Identity{entry->pw_uid, entry->pw_gid, user};
}

Identity identity_of(uid_t uid, gid_t gid) {
  const passwd* const entry = ::getpwuid(uid);
  if (entry == nullptr) return Identity{uid, gid, {}};
  return Identity{entry->pw_uid, entry->pw_gid, entry->pw_name};
}

Expected<Identity> owner_of(const std::string& directory) {
  struct stat status {};
  if (::stat(directory.c_str(), &status) != 0)
    return system_error("cannot enter", directory, errno);
  return identity_of(status.st_uid, status.st_gid);
}

Expected<void> become(const Identity& who) {
  if (who.uid == ::geteuid()) return {};
  const bool has_groups = who.name.empty() ? ::setgroups(1, &who.gid) == 0
                                           : ::initgroups(who.name.c_str(), who.gid) == 0;
  if (has_groups && ::setresgid(who.gid, who.gid, who.gid) == 0 &&
      ::setresuid(who.uid, who.uid, who.uid) == 0) {
    return {};
  }
  const int error = errno;
  return system_error("cannot act as", user_name(who.uid), error);
}

}  // namespace

Expected<void> enter_site(const std::string& directory, const std::string& user) {
  if (!user.empty() || ::geteuid() == 0) {
    const auto became = (user.empty() ? owner_of(directory) : identity_of(user)).and_then(become);
    if (!became) return became;
  }
  if (::chdir(directory.c_str()) != 0) return system_error("cannot enter", directory, errno);
  return {};
}

Expected<void> give_up_root(const std::filesystem::path& path) {
  std::filesystem::path way;
  for (const std::filesystem::path& part : path) {
    way /= part;
    struct stat link {
    }, file{};
    if (::geteuid() != 0 || ::lstat(way.c_str(), &link) != 0) return {};
    if (::stat(way.c_str(), &file) != 0) file = link;
    const struct stat& owned = link.st_uid != 0 ? link : file;
    if (owned.st_uid != 0) return act_as(owned.st_uid, owned.st_gid);
  }
  return {};
}

Expected<void> enter_site_and_say_so(const std::string& directory, const std::string& user) {
  const uid_t before = ::geteuid();
  const auto entered = enter_site(directory, user);
  if (entered && user.empty() && ::geteuid() != before) {
    warn(fmt::format("acting as {}, the owner of {}", user_name(::geteuid()), directory));
  }
  return entered;
}

Expected<void> act_as(uid_t uid, gid_t gid) { return become(identity_of(uid, gid)); }

std::string user_name(uid_t uid) {
  const Identity who = identity_of(uid, 0);
  return who.name.empty() ? std::to_string(uid) : who.name;
}

std::string owner_name(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? user_name(status.st_uid) : "";
}

}  // namespace toplist::ctl
