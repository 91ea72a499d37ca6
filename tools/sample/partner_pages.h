#pragma once

#include <filesystem>

#include "sample/sample_site.h"

namespace toplist::site {

/// Writes the own page of each trade of a sample site, with a picture for the harvest to find.
///
/// The layout is that of a plain file server used as an HTTP proxy: what is asked for as
/// "http://host/path" stands at "<directory>/http:/host/path". So no name has to be looked up, and
/// nothing outside of this machine is asked. Every seventh partner has no picture.
///
/// Returns the first file or folder that could not be created; an empty path when all were.
std::filesystem::path write_partner_pages(const std::filesystem::path& directory,
                                          const SampleOptions& options);

}  // namespace toplist::site
