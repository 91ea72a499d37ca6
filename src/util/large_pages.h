#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>

namespace toplist {

/// Asks the system for pages of 2 MiB in memory that is about to be filled, which saves most of the
/// page faults. A system without them ignores that.
inline void prefer_large_pages(void* memory, std::size_t size) {
#ifdef MADV_HUGEPAGE
  constexpr std::size_t kPageBytes = 2UL * 1024 * 1024;
  const std::size_t skipped = -reinterpret_cast<std::uintptr_t>(memory) % kPageBytes;
  if (size < skipped + kPageBytes) return;
  const std::size_t whole = (size - skipped) / kPageBytes * kPageBytes;
  ::madvise(static_cast<char*>(memory) + skipped, whole, MADV_HUGEPAGE);
#endif
}

}  // namespace toplist
