#include "toplistctl/commands/render/page_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "toplistctl/lib/site_files/real_path.h"
#include "util/file.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

bool leads_upward(const fs::path& path) {
  return std::find(path.begin(), path.end(), "..") != path.end();
}

/// Returns 0 or an errno. A file that is there goes first: it may be a link to something else.
int write_anew(const fs::path& path, std::string_view bytes) {
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) return errno;
  const UniqueFd fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  return fd && write_fully(fd.get(), bytes) ? 0 : errno;
}

}  // namespace

std::string PageFolder::add(const std::string& path, std::string_view page) const {
  const fs::path name = path.c_str();  // up to a NUL, as the system takes it
  if (leads_upward(name)) return "its path holds \"..\"";
  const fs::path place = folder_ / name.relative_path();
  if (real_path(place) == real_path(name))
    return "this is the site's own page, which only a run writes";
  std::error_code error;
  fs::create_directories(place.parent_path(), error);
  if (!error) error.assign(write_anew(place, page), std::generic_category());
  return error ? "cannot write " + place.string() + ": " + error.message() : "";
}

}  // namespace toplist::ctl
