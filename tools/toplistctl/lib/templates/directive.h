#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace toplist::ctl {

/// An instruction to the expansion of a source, such as "<!-- repeat 0-9 -->".
struct Directive {
  enum class Kind { include, repeat, end_repeat };

  Kind kind;
  std::string_view file;  ///< of an include; a view into the source
  int first = 0;          ///< of a repeat: a rank from 0 to 999
  int last = -1;          ///< of a repeat; below `first` when the directive is none
  std::string error;      ///< why it is none, although it begins like one
};

/// A directive and the line that it has to itself, as offsets into the source's text.
struct DirectiveLine {
  std::size_t begin;    ///< where the line begins
  std::size_t comment;  ///< where its "<!--" stands
  std::size_t end;      ///< behind the line and its line end
  Directive directive;
};

/// The first directive in the text from the offset `from` on, which is a line's start; also one
/// that only begins like a directive.
std::optional<DirectiveLine> next_directive(std::string_view text, std::size_t from);

}  // namespace toplist::ctl
