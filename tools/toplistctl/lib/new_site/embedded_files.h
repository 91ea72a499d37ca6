#pragma once

#include <span>
#include <string_view>

namespace toplist::ctl {

/// A file of content/, as it was when the program was built.
struct EmbeddedFile {
  std::string_view path;  ///< below content/, such as "sample/style.css"
  const char* begin;
  const char* end;

  [[nodiscard]] std::string_view bytes() const { return {begin, end}; }
};

/// All of them in the order of their paths, except README.md and partner/.
std::span<const EmbeddedFile> embedded_files();

}  // namespace toplist::ctl
