#pragma once

#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace toplist::ctl {

/// Notices changes of files, by a look at each of them. All threads may use it.
class Watch {
 public:
  /// Adds a file, which need not be there, as it is now; one that is known already stays as it was
  /// seen last. Above 10,000 files further ones are not watched.
  void add(const std::string& path);

  /// Whether a file has changed, come or gone since the last call, or since it was added.
  bool has_changed();

 private:
  /// Inode, size, seconds and nanoseconds of the last change; zeros when there is no file.
  using Stamp = std::array<std::int64_t, 4>;
  static Stamp stamp_of(const std::string& path);

  std::mutex mutex_;
  std::map<std::string, Stamp> stamps_;
};

}  // namespace toplist::ctl
