#pragma once

#include <span>
#include <string_view>

namespace toplist::site {

/// A file of site/ beside this header, as it was when the program was built.
struct EmbeddedFile {
  std::string_view path;  ///< below site/, e.g. "sample/style.css"
  const char* begin;
  const char* end;

  [[nodiscard]] std::string_view bytes() const { return {begin, end}; }
};

/// All of them, in the order of their paths; but for README.md.
std::span<const EmbeddedFile> embedded_files();

}  // namespace toplist::site
