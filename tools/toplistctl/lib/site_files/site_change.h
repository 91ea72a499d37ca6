#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toplistctl/lib/diagnostics/error.h"
#include "toplistctl/lib/site_files/site_lock.h"

/// Changes of a site's files that can be undone.
///
/// Every command that changes a site does it by a SiteChange: all files get their new contents or
/// none, also when the process is killed. The replaced files of the last change are kept in
/// "l/sys/undo/", as hard links where possible:
///
///     manifest    what was changed, as text:
///                     import trades                       the command
///                     2026-11-23 19:14:13                 when, in local time
///                     replaced SHA1 d/t/index             the files, with the SHA-1 of what the
///                     added SHA1 d/tl/tl.a1               change has put there; "-" where there
///                     removed - d/h/old.example.his       is nothing now
///     0, 1, ...   the old files, in the order of the manifest; added ones have none
///     unfinished  is there while files are being replaced, or put back
///
/// A change is prepared in "l/sys/undo.new/", with each new file beside its old one under the name
/// "FILE.toplistctl-new". Then "l/sys/undo/" becomes "l/sys/undo.old/", the prepared folder takes
/// its place, the new files take theirs, and "unfinished" goes, then "l/sys/undo.old/". So whatever
/// a killed command leaves is listed in a manifest: the next change removes it, and undoes a change
/// of which some files are in place already.
namespace toplist::ctl {

inline constexpr std::string_view kNothingChanged = "Nothing was changed.";

/// The same error, ended by "Nothing was changed."
Error nothing_changed(Error error);

/// One change of the site in the working directory, made under the site's lock, which it holds from
/// begin() to its end. As root, enter_site() must have become the site's owner before: links of the
/// site are followed, and lead only to where this user may write.
class SiteChange {
 public:
  /// Takes the site's lock, waiting for it if need be; undoes a change that was not finished, and
  /// removes what a killed command left. `command` is for the manifest: "import trades".
  static Expected<SiteChange> begin(std::string command);

  SiteChange(SiteChange&& other) noexcept = default;
  SiteChange& operator=(SiteChange&&) = delete;
  ~SiteChange();

  /// Adds the new contents of a file. Nothing is written before commit(). An existing file keeps
  /// its mode and, if the system allows it, its owner. A new one gets mode 0666 less the umask.
  void write(std::string path, std::string bytes);
  /// Adds the removal of a file, which must exist.
  void remove(std::string path);

  /// Makes the change. If there is nothing to change, it does nothing, and the last change can
  /// still be undone. Call it at most once. An error says that nothing was changed, or what is left
  /// to do.
  Expected<void> commit();

 private:
  struct Step {
    std::string path;
    std::optional<std::string> bytes;  ///< nothing: the file is to go
  };
  SiteChange(std::string command, SiteLock lock)
      : command_(std::move(command)), lock_(std::move(lock)) {}

  static Error about(const Step& step, Error error);
  Expected<void> prepare();
  Expected<void> carry_out();

  std::string command_;
  SiteLock lock_;
  std::vector<Step> steps_;
  bool is_under_way_ = false;  ///< commit() has begun and not come to its end
};

/// What an undo has done.
struct Undone {
  std::string change;              ///< "import trades of 2026-11-23 19:14:13"
  std::vector<std::string> files;  ///< that are as they were before the change
};

/// Takes the lock and puts the files of the last change back, all or none; it can be undone once.
/// Files that have changed since, which the site's counters may have done, are an error unless
/// `force`: undoing loses what was written since. Nothing when there is no change to undo.
Expected<std::optional<Undone>> undo_last_change(bool force);

/// The change that a killed command has left half done in the site in the working directory, such
/// as "import trades of 2026-11-23 19:14:13". `toplistctl undo`, or any command that changes the
/// site, puts the old files back. Nothing if there is none. Call this only if nobody holds the
/// site's lock: otherwise a command may still be making the change.
std::optional<std::string> unfinished_change();

}  // namespace toplist::ctl
