#pragma once

#include <string>
#include <string_view>

#include "util/file.h"

namespace toplist::ctl {

/// A file of the site, read whole.
class SiteFile {
 public:
  explicit SiteFile(std::string path);

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] bool is_open() const { return error_ == 0; }
  /// Why it cannot be opened, as errno tells.
  [[nodiscard]] int error() const { return error_; }
  /// Empty when it cannot be opened.
  [[nodiscard]] std::string_view text() const { return bytes_.text(); }

 private:
  std::string path_;
  FileBuffer bytes_;
  int error_ = 0;
};

}  // namespace toplist::ctl
