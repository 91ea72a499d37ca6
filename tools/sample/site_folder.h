#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

#include "util/file.h"
#include "util/sha1.h"

namespace toplist::site {

/// Writes files below one directory. After a failure it does nothing more.
class SiteFolder {
 public:
  explicit SiteFolder(std::filesystem::path root) : root_(std::move(root)) {}

  void make_folder(std::string_view path) {
    std::error_code error;
    if (failed_.empty() && (std::filesystem::create_directories(root_ / path, error), error)) {
      failed_ = root_ / path;
    }
  }

  void write(std::string_view path, std::string_view bytes) {
    if (failed_.empty() && !write_file((root_ / path).string(), bytes)) failed_ = root_ / path;
  }

  /// A second name for the file at `target`; false where the file system has no room for one.
  bool link(std::string_view target, std::string_view path) {
    std::error_code error;
    std::filesystem::create_hard_link(root_ / target, root_ / path, error);
    return !error;
  }

  void remove(std::string_view path) {
    std::error_code ignored;
    std::filesystem::remove(root_ / path, ignored);
  }

  [[nodiscard]] std::string check_value(std::string_view path) const {
    return sha1_file_hex((root_ / path).string());
  }

  [[nodiscard]] const std::filesystem::path& failed() const { return failed_; }

 private:
  std::filesystem::path root_;
  std::filesystem::path failed_;
};

}  // namespace toplist::site
