#include "toplistctl/site_view/real_path.h"

#include <system_error>

namespace toplist::ctl {

std::filesystem::path real_path(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::path whole = std::filesystem::current_path(error) / path;
  const std::filesystem::path real = std::filesystem::weakly_canonical(whole, error);
  return error ? whole : real;
}

}  // namespace toplist::ctl
