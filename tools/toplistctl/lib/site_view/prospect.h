#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace toplist::ctl {

/// What the next run does with one toplist.
struct Prospect {
  enum class Kind {
    built,
    skipped,     ///< its build mode or check value keeps it from being built
    stopped,     ///< the run ends at it
    unreached,   ///< the run ends before it
    unforeseen,  ///< it, or one before it, reads what the same run has replaced by a page
  };

  Kind kind = Kind::built;
  std::string reason = {};  ///< Why it is not built, in one line; empty when it is.
  std::size_t line = 0;  ///< Of the template, from 1: of the stray mark that ends the run, if any.

  [[nodiscard]] bool is_built() const { return kind == Kind::built; }

  /// One word for programs: "built", "skipped", "stopped", "unreached", "unforeseen".
  [[nodiscard]] std::string_view word() const;

  /// One line for people, such as "skipped: its build mode is "3"".
  [[nodiscard]] std::string text() const;
};

}  // namespace toplist::ctl
