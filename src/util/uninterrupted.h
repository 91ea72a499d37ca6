#pragma once

#include <cerrno>

namespace toplist {

/// Repeats a system call as long as a signal interrupts it. Returns the call's result. If that is
/// below 0, errno has the reason, which is never EINTR.
template <typename Call>
auto uninterrupted(const Call& call) {
  for (;;) {
    const auto result = call();
    if (result >= 0 || errno != EINTR) return result;
  }
}

}  // namespace toplist
