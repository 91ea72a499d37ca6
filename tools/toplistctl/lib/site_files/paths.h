#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "toplistctl/lib/diagnostics/error.h"

namespace toplist::ctl {

/// The one path of a file, however it is written. One that is not there yet has one as well.
std::filesystem::path real_path(const std::filesystem::path& path);

/// The same text for every path of a file, also for its hard links.
std::string file_identity(const std::string& path);

/// Why a run could not open the file at `path` for writing, or create it there; nothing if it
/// could. Only asked, never tried: the file and its folder stay untouched.
std::optional<Error> why_not_writable(const std::string& path);

}  // namespace toplist::ctl
