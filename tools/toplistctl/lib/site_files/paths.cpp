#include "toplistctl/lib/site_files/paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

/// 0, or the errno if this process may not do so.
int access_error(const fs::path& path, int mode) {
  return ::access(path.c_str(), mode) == 0 ? 0 : errno;
}

/// 0, or the errno with which the creation of a missing file would fail. A link to a missing file
/// counts as that file.
int creation_error(const fs::path& path) {
  std::error_code error;
  if (fs::is_symlink(path, error)) {
    const auto why = why_not_writable(path.parent_path() / fs::read_symlink(path, error));
    return why ? why->code : 0;
  }
  return path.has_filename() ? access_error(path.parent_path() / ".", W_OK | X_OK) : ENOENT;
}

int writing_error(const fs::path& path) {
  const int missing = access_error(path, F_OK);
  if (missing != 0) return missing == ENOENT ? creation_error(path) : missing;
  std::error_code error;
  return fs::is_directory(path, error) ? EISDIR : access_error(path, W_OK);
}

}  // namespace

fs::path real_path(const fs::path& path) {
  std::error_code error;
  const fs::path whole = fs::current_path(error) / path;
  const fs::path real = fs::weakly_canonical(whole, error);
  return error ? whole : real;
}

std::string file_identity(const std::string& path) {
  struct stat file {};
  if (::stat(path.c_str(), &file) != 0) return real_path(path).string();
  return std::to_string(file.st_dev) + ":" + std::to_string(file.st_ino);
}

std::optional<Error> why_not_writable(const std::string& path) {
  // A path may hold NUL bytes: the system reads it up to the first.
  const int code = writing_error(path.c_str());
  if (code == 0) return std::nullopt;
  return Error{"cannot open", path, code, {}};
}

}  // namespace toplist::ctl
