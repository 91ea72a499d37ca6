#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

#include "toplistctl/lib/diagnostics/error.h"

namespace toplist::ctl {

/// Makes the site's root the working directory, as it is in a run.
///
/// Root first becomes another user for good, so that nothing the site's owner has prepared, such as
/// a symbolic link, can make root read or write elsewhere: `user`, or without one the owner of the
/// site's root folder. Other users may name only themselves as `user`.
Expected<void> enter_site(const std::string& directory, const std::string& user = "");

/// enter_site(), with a note on standard error if root has become the site's owner without `user`:
/// the owner may read and write other files than root.
Expected<void> enter_site_and_say_so(const std::string& directory, const std::string& user);

/// Root becomes, for good, the first other owner of anything on the path: for files outside sites.
Expected<void> give_up_root(const std::filesystem::path& path);

/// Root becomes the user with this number for good, in the groups that the system lists for it.
Expected<void> act_as(uid_t uid, gid_t gid);

/// The user's name, or its number when the system has no name for it.
std::string user_name(uid_t uid);

/// The name of the owner of a file or folder; empty when there is none.
std::string owner_name(const std::string& path);

}  // namespace toplist::ctl
