#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toplistctl/lib/diagnostics/error.h"

/// New sites: collected in memory, then created as a whole.
namespace toplist::ctl {

/// Who owns a folder, and who may do what in it.
struct Access {
  uid_t uid;
  gid_t gid;
  mode_t mode;
};

/// The contents of a new folder. Paths are relative to it. The folders of a path are created as
/// well.
struct NewSite {
  std::vector<std::string> folders;
  std::map<std::string, std::string, std::less<>> files;  ///< contents by path
  /// Path and target. They are created after all files, in this order, so that a file is never
  /// written through one.
  std::vector<std::pair<std::string, std::string>> links;
  /// Folders that get this access as far as the system allows it. Others get the usual one.
  std::map<std::string, Access> access;
  /// Who owns the new files if root creates them; without it, root.
  std::optional<std::pair<uid_t, gid_t>> owner;
};

/// A site without trades: the folders and files that a run needs, a configuration that neither
/// harvests nor requires thumbnails, and one toplist with its template and its source.
Expected<NewSite> empty_site();

/// The text of a file in content/; it must exist.
std::string_view content(std::string_view path);

/// Adds the files below a folder of content/. They replace files of the same path.
void add_content(NewSite& site, std::string_view folder);

/// Adds the expanded template of each source, and its check value to the definitions.
Expected<void> install_templates(NewSite& site);

/// Creates the site at `directory`: all of it, or nothing and an error.
///
/// The folder must not exist, or be empty and belong to the caller; its parent must exist. The site
/// is built in a private folder in it and then moved up, "d" last. Neither step follows a link. A
/// killed process leaves the private folder, ".new-PID".
///
/// Root first becomes, for good, the first other user who owns a folder or link on the path: nobody
/// can make root write elsewhere by what they put there.
Expected<void> create_site(const std::string& directory, const NewSite& site);

}  // namespace toplist::ctl
