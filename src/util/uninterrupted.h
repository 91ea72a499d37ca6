#pragma once

#include <cerrno>

namespace toplist {

/// Makes a system call, again as long as a signal cuts it short. Returns what it returned; below 0
/// errno tells why, and never EINTR.
template <typename Call>
auto uninterrupted(const Call& call) {
  for (;;) {
    const auto result = call();
    if (result >= 0 || errno != EINTR) return result;
  }
}

}  // namespace toplist
