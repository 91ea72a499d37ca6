#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace toplist::ctl {

/// A folder that takes the pages of a run at their own paths, absolute ones below it, too.
class PageFolder {
 public:
  /// `folder` is relative to the working directory at this moment; it is created when needed.
  explicit PageFolder(const std::filesystem::path& folder)
      : folder_(std::filesystem::current_path() / folder) {}

  /// Writes a page, in place of one that is there. Returns what is wrong, or an empty text. A path
  /// with "..", or one whose place in the folder is the site's own page, is refused.
  [[nodiscard]] std::string add(const std::string& path, std::string_view page) const;

 private:
  std::filesystem::path folder_;
};

}  // namespace toplist::ctl
