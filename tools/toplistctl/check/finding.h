#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace toplist::ctl {

/// What a run does about something that is wrong, from the gravest on.
enum class Effect {
  stop,  ///< ends, or builds no further toplist
  skip,  ///< leaves out the one toplist
  log,   ///< adds a line to the log and goes on without the thing
  show,  ///< shows something other than meant, without a word
  lose,  ///< loses a log line or a thumbnail, without a word
};

/// A word for programs, such as "stop", and a few for people, such as "stops the run".
std::string_view effect_word(Effect effect);
std::string_view effect_text(Effect effect);

/// A kind of fault.
struct Kind {
  std::string_view name;  ///< lower case with hyphens; stays the same over versions
  Effect effect;
  std::string_view advice;  ///< what to do
};

/// Where in a file; everything counts from 1, and 0 stands for "not told".
struct Place {
  std::size_t line = 0;
  std::size_t column = 0;
  std::size_t record = 0;

  /// Such as "line 3, column 14"; empty when nothing is told.
  [[nodiscard]] std::string text() const;
  bool operator==(const Place&) const = default;
};

/// A fault of a site.
struct Finding {
  const Kind* kind;
  std::string file;  ///< relative to the site's root
  Place place = {};
  std::string message;
};
using Findings = std::vector<Finding>;

/// The text in double quotes.
std::string in_quotes(std::string_view text);

/// "1 record", "2 records".
std::string count_of(std::size_t count, const char* unit);

}  // namespace toplist::ctl
