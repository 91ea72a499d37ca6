#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "toplistctl/lib/diagnostics/error.h"

/// Files written whole under another name, which then take their place in one step.
namespace toplist::ctl {

/// The suffix of a file's new contents, until they take its place.
inline constexpr std::string_view kNewSuffix = ".toplistctl-new";

/// Finds files behind links. Folders are looked up once.
class RealPaths {
 public:
  /// The path of a file, which need not exist, with all links followed. An error if a link or a
  /// folder leads nowhere.
  Expected<std::string> of(const std::string& path);
  /// The folders of the paths so far.
  [[nodiscard]] std::vector<std::string> folders() const;

 private:
  std::unordered_map<std::string, std::string> folders_;
};

/// Writes `bytes` into a new file `path` + kNewSuffix, with the mode and, where the system allows
/// it, the owner of the regular file at `path`; without one with mode 0666 less the umask. `path`
/// is a real one. A file that a killed command has left there is replaced.
Expected<void> write_new_file(const std::string& path, std::string_view bytes);

/// Writes `bytes` into a new file at `path`, in place of any that is there, with mode 0666 less the
/// umask.
Expected<void> create_file(const std::string& path, std::string_view bytes);

/// Makes `copy` a hard link to the file, or a copy on the disk if there can be no hard link.
Expected<void> link_or_copy(const std::string& file, const std::string& copy);

Expected<void> rename_file(const std::string& from, const std::string& to);

/// Removes a file; none there is fine.
Expected<void> remove_file(const std::string& path);

/// Writes these files to the disk. For many files it writes their whole file systems, which takes a
/// hundredth of the time.
Expected<void> sync_files(const std::vector<std::string>& paths);

/// Replaces one file, outside of sites: in one step, or leaves it as it was. Links are followed.
Expected<void> replace_file(const std::string& path, std::string_view bytes);

}  // namespace toplist::ctl
