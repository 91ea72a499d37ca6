#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

#include "toplistctl/lib/new_site/site_texts.h"

namespace toplist::site {

/// The folders of a site that a run reads or writes, below its root.
inline constexpr std::array kSiteFolders = {"d/t",   "d/h",       "d/tl",    "d/gr",
                                            "l/sys", "l/sys/net", "l/thumbs"};

/// Writes files below one directory. After a failure it does nothing more.
class SiteFolder {
 public:
  /// The directory itself, and those above it, are made where they lack.
  explicit SiteFolder(std::filesystem::path root);

  void make_folder(std::string_view path);
  /// Makes the folders of its path as well.
  void write(std::string_view path, std::string_view bytes);
  void write(const SiteTexts& texts);
  /// The same for a file that written() does not list.
  void write_unlisted(std::string_view path, std::string_view bytes);
  /// A second name for the file at `target`, which was written with these bytes; a copy where the
  /// file system has no room for one more name.
  void link(std::string_view target, std::string_view path, std::string_view bytes);

  /// What was written, a line per file as sha1sum writes them.
  [[nodiscard]] const std::string& written() const { return written_; }
  /// What could not be done, and why; empty while all went well.
  [[nodiscard]] const std::string& problem() const { return problem_; }

 private:
  bool try_to_write(const std::string& path, std::string_view bytes);
  void fail(const std::filesystem::path& path, int error);
  void note(std::string_view path, std::string_view bytes);

  std::filesystem::path root_;
  std::string written_;
  std::string problem_;
};

}  // namespace toplist::site
