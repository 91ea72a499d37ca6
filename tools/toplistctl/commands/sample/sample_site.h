#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace toplist::site {

enum class Thumbnails {
  ready,      ///< A thumbnail per trade is laid out, and only trades with one are shown.
  none,       ///< There are none, and none is required.
  harvested,  ///< Required, but the run has to harvest them from `partner_pages`.
};

struct SampleOptions {
  std::size_t trades = 60;    ///< Records in the database; a run needs at least 10.
  std::size_t toplists = 5;   ///< Five designed pages, further ones are plain tables.
  bool plain = false;         ///< Plain tables only.
  std::uint64_t seed = 2007;  ///< The same seed gives the same site, byte for byte.
  Thumbnails thumbnails = Thumbnails::ready;
  std::filesystem::path partner_pages = {};  ///< For write_partner_pages(), when harvested.
  bool replace = false;  ///< Also over a sample that has been changed since it was laid out.
};

/// Lays out a complete site of invented trades: everything that a run reads, the folders it writes
/// to, and the style sheet of its pages. The files of an earlier sample site go; others, such as
/// the pages and the log of a run, stay. A folder that is neither empty nor an unchanged sample
/// site is not touched.
///
/// Returns what could not be done; empty when the site is complete.
std::string write_sample_site(const std::filesystem::path& directory, const SampleOptions& options);

}  // namespace toplist::site
