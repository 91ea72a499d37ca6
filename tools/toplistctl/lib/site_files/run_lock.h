#pragma once

#include <cstdint>
#include <optional>

namespace toplist::ctl {

/// Whoever runs toplist for a site, or replaces several of its files, holds a lock on this file
/// meanwhile, as "flock l/sys/toplist.lock" does.
inline constexpr const char* kRunLockPath = "l/sys/toplist.lock";

/// What holds the lock.
struct LockHolder {
  std::optional<std::int64_t> seconds;  ///< since it started; nothing when the system does not tell
};

/// Who holds the site's lock now, if anybody does.
std::optional<LockHolder> lock_holder();

}  // namespace toplist::ctl
