#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace toplist::test {

struct SiteSize {
  std::size_t trades = 60;
  std::size_t toplists = 20;
  std::uint64_t seed = 2007;  ///< the same seed gives the same site, byte for byte
};

/// Writes a complete site of this size into a new or empty folder. Throws what cannot be written.
///
/// One trade in sixteen is not active. Each has figures that suit each other, a history of 30
/// records and six extra columns, of which the titles hold alternatives. The toplists are plain
/// tables of 100 ranks with 10 tags each, of mode "1" and ordered by different values; every third
/// has a minimum. No thumbnails are required.
void write_site(const std::filesystem::path& folder, const SiteSize& size);

}  // namespace toplist::test
