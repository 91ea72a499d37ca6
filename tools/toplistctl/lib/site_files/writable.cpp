#include "toplistctl/lib/site_files/writable.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

bool refuse(int error) {
  errno = error;
  return false;
}

/// Where the file that is not there yet would be created; a link that leads nowhere leads there.
bool can_be_created(const fs::path& path) {
  std::error_code error;
  if (fs::is_symlink(path, error)) {
    return can_be_written(path.parent_path() / fs::read_symlink(path, error));
  }
  if (!path.has_filename()) return refuse(ENOENT);
  return ::access((path.parent_path() / ".").c_str(), W_OK | X_OK) == 0;
}

}  // namespace

bool can_be_written(const std::string& path) {
  if (::access(path.c_str(), F_OK) != 0) return errno == ENOENT && can_be_created(path.c_str());
  std::error_code error;
  if (fs::is_directory(path.c_str(), error)) return refuse(EISDIR);
  return ::access(path.c_str(), W_OK) == 0;
}

}  // namespace toplist::ctl
