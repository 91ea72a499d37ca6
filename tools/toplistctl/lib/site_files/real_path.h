#pragma once

#include <filesystem>
#include <string>

namespace toplist::ctl {

/// The one path of a file, however it is written. One that is not there yet has one as well.
std::filesystem::path real_path(const std::filesystem::path& path);

/// The same text for every path of a file, also for its hard links.
std::string file_identity(const std::string& path);

}  // namespace toplist::ctl
