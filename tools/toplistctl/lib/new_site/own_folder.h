#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "toplistctl/lib/new_site/site_folder.h"

/// Folders that the program has laid out and may lay out again.
///
/// A marker in their root lists what was written: SHA-1 and path, as "sha1sum -c" reads them. So
/// what somebody has changed since is not overwritten by mistake, and what an earlier, larger one
/// had goes. What else is there, such as the pages and the log of a run, stays.
namespace toplist::site {

struct OwnFolderKind {
  std::string_view marker;  ///< the file's name
  std::string_view name;    ///< "a sample site"
};

/// Why the folder must not be laid out; empty when it may be: it is not there, it is empty, or it
/// is one of this kind that was finished and that nobody has changed since. `replace` does not ask
/// for the latter. Nothing is written.
std::string why_not(const std::filesystem::path& directory, const OwnFolderKind& kind,
                    bool replace);

/// Why the folder cannot be laid out as a new one; empty when it is not there or empty.
std::string why_not_new(const std::filesystem::path& directory);

/// Removes what the marker of the folder lists, and gives it a marker without a list.
SiteFolder begin_own_folder(const std::filesystem::path& directory, const OwnFolderKind& kind);

/// Lists in the marker what was written. Returns what could not be done since the beginning; empty
/// when the folder is complete.
std::string finish_own_folder(SiteFolder& folder, const OwnFolderKind& kind);

}  // namespace toplist::site
