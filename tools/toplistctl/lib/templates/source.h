#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/diagnostics/error.h"

/// A source is a template with directives, each alone on its line, blanks around it allowed:
///
///     <!-- include FILE -->       the file's text, itself expanded; relative to the file it is in
///     <!-- repeat FIRST-LAST -->  the lines up to the end, once for each of these ranks, 0 to 999
///     <!-- end repeat -->
///
/// In a repeat "NNN" in the rank's place of a tag (%%tit_NNN%%) becomes the rank in three digits,
/// and "{place}" the rank counted from 1. Repeats do not nest, and one begins and ends in the same
/// file. The lines of the directives vanish; all other bytes stay as they are.
namespace toplist::ctl {

/// Gives the text of a source file. The path is as the expansion names it: an include's is joined
/// to the folder of the file that names it.
using ReadSource = std::function<Expected<std::string>(const std::string& path)>;

struct SourceFile {
  std::string name;
  std::string plain_name;  ///< without "." and "..", to recognise a circle
  std::string text;
};

struct Expansion {
  std::string text;    ///< the template
  Diagnostics errors;  ///< each once, of kind kSourceError; when there are any, `text` is of no use

  /// A line of a source as it was written to `text`. Without a line end, more follow on its line.
  struct WrittenLine {
    std::size_t line;  ///< where it begins in `text`, from 1
    std::size_t column;
    std::uint32_t file;         ///< an index of `files`
    std::uint32_t source_line;  ///< from 1
    std::string_view source;    ///< the line in that file's text
    int rank;                   ///< kNoRank outside of a repeat
  };
  static constexpr int kNoRank = -1;
  std::deque<SourceFile> files;    ///< those that could be read; the source itself is the first
  std::vector<WrittenLine> lines;  ///< in the text's order

  /// Where in the sources the byte at this place of the text comes from. The digits of a place come
  /// from the "{" of their "{place}".
  [[nodiscard]] Place place_of(std::size_t line, std::size_t column) const;

  Expansion() = default;
  Expansion(Expansion&&) = default;  // not copied: `lines` are views into `files`
  Expansion& operator=(Expansion&&) = default;
  ~Expansion() = default;
};

/// Expands the source at `path`. Each file is read once. Takes time in proportion to what goes in
/// and comes out; an expansion beyond all reason is an error. When the source itself cannot be read
/// `files` is empty and `errors` says why.
Expansion expand_source(const std::string& path, const ReadSource& read);

}  // namespace toplist::ctl
