#pragma once

#include <csignal>
#include <cstdint>
#include <optional>

#include "toplistctl/lib/diagnostics/error.h"
#include "util/unique_fd.h"

namespace toplist::ctl {

/// Whoever runs toplist for a site, or changes its files, holds a lock on this file meanwhile, as
/// "flock l/sys/toplist.lock" does.
inline constexpr const char* kRunLockPath = "l/sys/toplist.lock";

/// The lock of the site in the working directory, held as long as this object lives. Meanwhile
/// interrupts and requests to end wait, so that they cannot leave half of a change.
class SiteLock {
 public:
  explicit SiteLock(UniqueFd fd);
  SiteLock(SiteLock&& other) noexcept = default;
  SiteLock& operator=(SiteLock&&) = delete;
  ~SiteLock();

  /// Whether an interrupt or a request to end waits.
  [[nodiscard]] static bool is_asked_to_end();

 private:
  UniqueFd fd_;
  sigset_t signals_before_{};
};

/// Takes the lock, so that no run sees files of which some are replaced already. While another
/// process has it this waits, and says so on standard error.
///
/// A new lock file gets mode 0600 whatever the umask, so that no other user of the machine can hold
/// the lock. The site's owner must make it: see enter_site().
Expected<SiteLock> lock_site();

/// What holds the lock.
struct LockHolder {
  std::optional<std::int64_t> seconds;  ///< since it started; nothing when the system does not tell
};

/// Who holds the site's lock now, if anybody does. Asked of the system's list: trying the lock
/// would keep a run that begins just now from it.
std::optional<LockHolder> lock_holder();

}  // namespace toplist::ctl
