#include "toplistctl/lib/site_files/real_path.h"

#include <sys/stat.h>

#include <system_error>

namespace toplist::ctl {

std::filesystem::path real_path(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::path whole = std::filesystem::current_path(error) / path;
  const std::filesystem::path real = std::filesystem::weakly_canonical(whole, error);
  return error ? whole : real;
}

std::string file_identity(const std::string& path) {
  struct stat file {};
  if (::stat(path.c_str(), &file) != 0) return real_path(path).string();
  return std::to_string(file.st_dev) + ":" + std::to_string(file.st_ino);
}

}  // namespace toplist::ctl
