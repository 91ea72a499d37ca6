#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

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

/// Where in the sources an error or a byte of the expansion comes from; line and column from 1.
/// Both are 0 for an error about a file as a whole.
struct SourcePlace {
  std::string file;
  std::size_t line = 0;
  std::size_t column = 0;

  bool operator==(const SourcePlace&) const = default;
};

struct SourceError {
  SourcePlace place;
  std::string message;

  bool operator==(const SourceError&) const = default;
};

/// Gives the text of a source file; nothing when it cannot be opened. The path is as the expansion
/// names it: an include's is joined to the folder of the file that names it.
using ReadSource = std::function<std::optional<std::string>(const std::string& path)>;

struct Expansion {
  std::string text;                 ///< the template
  std::vector<SourceError> errors;  ///< each once; when there are any, `text` is of no use

  /// Where in the sources the byte at this place of the text comes from. The digits of a rank or a
  /// place stand for the word that they replace.
  [[nodiscard]] SourcePlace place_of(std::size_t line, std::size_t column) const;

  /// From here on in the text, to the next stretch, bytes are as far apart as in their file.
  struct Stretch {
    std::size_t line;  ///< in the text
    std::size_t column;
    std::size_t source_line;
    std::size_t source_column;
    std::uint32_t file;  ///< an index of `files`
  };
  std::vector<std::string> files;  ///< their names; the source itself is the first
  std::vector<Stretch> stretches;  ///< in the text's order
};

/// Expands the source at `path`. Each file is read once. Takes time in proportion to what goes in
/// and comes out; an expansion beyond all reason is an error.
Expansion expand_source(const std::string& path, const ReadSource& read);

/// The text of a file; nothing, and errno, when it cannot be opened or is a folder.
std::optional<std::string> read_source_file(const std::string& path);

}  // namespace toplist::ctl
