#pragma once

#include <filesystem>
#include <string>

namespace toplist::site {

/// Lays out a site without trades: the folders and files that a run needs, a configuration that
/// neither harvests nor requires thumbnails, and one toplist with its template and its source. The
/// directory must be new or empty.
///
/// Returns what could not be done; empty when the site is complete.
std::string write_empty_site(const std::filesystem::path& directory);

}  // namespace toplist::site
