#pragma once

#include <csignal>
#include <cstdint>
#include <optional>

#include "toplistctl/lib/diagnostics/error.h"
#include "util/unique_fd.h"

namespace toplist::ctl {

/// The lock file. Scheduled runs, and commands that change the site's files, hold a lock on it, as
/// "flock l/sys/toplist.lock" does.
inline constexpr const char* kRunLockPath = "l/sys/toplist.lock";

/// The lock of the site in the working directory, held as long as this object lives. Signals that
/// would end the process are delayed until then, so that they cannot leave half of a change.
class SiteLock {
 public:
  explicit SiteLock(UniqueFd fd);
  SiteLock(SiteLock&& other) noexcept = default;
  SiteLock& operator=(SiteLock&&) = delete;
  ~SiteLock();

  /// Whether such a signal has arrived.
  [[nodiscard]] static bool is_asked_to_end();

 private:
  UniqueFd fd_;
  sigset_t signals_before_{};
};

/// Takes the lock, so that no run sees some files replaced and others not. Waits while another
/// process has it, and says so on standard error.
///
/// A new lock file gets mode 0600 whatever the umask, so that no other user of the machine can hold
/// the lock. The site's owner must make it: see enter_site().
Expected<SiteLock> lock_site();

/// What holds the lock.
struct LockHolder {
  std::optional<std::int64_t> seconds;  ///< since it started; nothing when the system does not tell
};

/// The current holder of the site's lock, if any, from the system's list of locks: taking the lock
/// to find out could stop a run that begins at this moment.
std::optional<LockHolder> lock_holder();

}  // namespace toplist::ctl
