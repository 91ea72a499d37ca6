#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>

#include "util/unique_fd.h"

/// What a web server may show of the site in the working directory.
namespace toplist::ctl {

/// Whether the path, relative to the site's root, names nothing private: no dot file or "..",
/// nothing in "d/" or "l/sys/".
bool is_public(const std::filesystem::path& path);

struct PublicFile {
  UniqueFd fd;
  std::size_t size;
};

/// Opens a public regular file. Nothing when there is none, or when a link on its path leads to
/// something outside of the site or private.
std::optional<PublicFile> open_public_file(const std::filesystem::path& path);

}  // namespace toplist::ctl
