#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "toplistctl/lib/diagnostics/error.h"

namespace toplist::ctl {

/// The canonical path of a file, even if the file does not exist yet.
std::filesystem::path real_path(const std::filesystem::path& path);

/// The same text for every path of a file, also for its hard links.
std::string file_identity(const std::string& path);

/// Why a run could not open the file at `path` for writing, or create it there; nothing if it
/// could. It only asks the system: the file and its folder are unchanged.
std::optional<Error> why_not_writable(const std::string& path);

}  // namespace toplist::ctl
