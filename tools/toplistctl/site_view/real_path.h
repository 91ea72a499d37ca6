#pragma once

#include <filesystem>

namespace toplist::ctl {

/// The one path of a file, however it is written. One that is not there yet has one as well.
std::filesystem::path real_path(const std::filesystem::path& path);

}  // namespace toplist::ctl
