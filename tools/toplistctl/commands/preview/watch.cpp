#include "toplistctl/commands/preview/watch.h"

#include <cstddef>
#include <utility>

namespace toplist::ctl {
namespace {

constexpr std::size_t kMostFiles = 10000;

}  // namespace

Watch::Stamp Watch::stamp_of(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return {};
  return {static_cast<std::int64_t>(status.st_ino), status.st_size, status.st_mtim.tv_sec,
          status.st_mtim.tv_nsec};
}

void Watch::add(const std::string& path) {
  const std::lock_guard lock(mutex_);
  if (stamps_.size() < kMostFiles && !stamps_.contains(path)) stamps_[path] = stamp_of(path);
}

bool Watch::has_changed() {
  const std::lock_guard lock(mutex_);
  bool changed = false;
  for (auto& [path, stamp] : stamps_) {
    const Stamp now = stamp_of(path);
    changed |= std::exchange(stamp, now) != now;
  }
  return changed;
}

}  // namespace toplist::ctl
