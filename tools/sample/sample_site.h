#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace toplist::site {

enum class Thumbnails {
  ready,      ///< A thumbnail per trade is laid out, and only trades with one are shown.
  none,       ///< There are none, and none is required.
  harvested,  ///< Required, but the run has to harvest them; see write_partner_pages().
};

struct SampleOptions {
  std::size_t trades = 60;        ///< Records in the database; a run needs at least 10.
  std::size_t toplists = 5;       ///< Five designed pages, further ones are plain tables.
  std::size_t most_designed = 5;  ///< 0: plain tables only.
  std::uint64_t seed = 2007;      ///< The same seed gives the same site, byte for byte.
  Thumbnails thumbnails = Thumbnails::ready;
};

/// Stands in the root of every sample site; holds a sentence that says so.
inline constexpr const char* kSampleMarker = ".sample-site";

/// Whether a sample site may be laid out at `directory`: it does not exist, is empty, or holds a
/// sample site already. A real site is never written over.
bool may_hold_sample_site(const std::filesystem::path& directory);

/// Lays out a complete site of invented trades: everything that a run reads, the folders it writes
/// to, and the style sheet of its pages. Files of an earlier sample site are replaced, others, such
/// as the pages and the log of a run, stay. About one trade in sixteen is not active.
///
/// Returns the first file or folder that could not be created, where the work stopped; an empty
/// path when the site is complete.
std::filesystem::path write_sample_site(const std::filesystem::path& directory,
                                        const SampleOptions& options);

}  // namespace toplist::site
