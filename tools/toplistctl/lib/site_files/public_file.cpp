#include "toplistctl/lib/site_files/public_file.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>

#include <algorithm>
#include <system_error>

namespace toplist::ctl {

namespace fs = std::filesystem;

bool is_public(const fs::path& path) {
  if (path.empty() || path.is_absolute() || path.native().find('\0') != std::string::npos) {
    return false;
  }
  const auto is_dot_file = [](const fs::path& part) { return part.native().starts_with('.'); };
  if (std::any_of(path.begin(), path.end(), is_dot_file)) return false;
  const auto second = std::next(path.begin());
  return *path.begin() != "d" &&
         !(*path.begin() == "l" && second != path.end() && *second == "sys");
}

std::optional<PublicFile> open_public_file(const fs::path& path) {
  if (!is_public(path)) return std::nullopt;
  // Without waiting for a FIFO's writer.
  UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (!fd || ::fstat(fd.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  // Where the open file really is: asked afterwards, so that no link can be changed in between.
  std::error_code error;
  const fs::path real = fs::read_symlink(fmt::format("/proc/self/fd/{}", fd.get()), error);
  if (error || !is_public(real.lexically_relative(fs::current_path(error)))) return std::nullopt;
  return PublicFile{std::move(fd), static_cast<std::size_t>(status.st_size)};
}

}  // namespace toplist::ctl
