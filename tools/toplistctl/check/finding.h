#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace toplist::ctl {

/// What a run does about something that is wrong, from the gravest on.
enum class Effect {
  overwrite,  ///< replaces a file of the site that is no page
  stop,       ///< ends, or builds no further toplist
  skip,       ///< leaves out the one toplist
  log,        ///< adds a line to the log and goes on without the thing
  show,       ///< shows something other than meant, without a word
  lose,       ///< loses a log line or a thumbnail, without a word
  note,       ///< does as meant: this is only worth knowing
};

/// How an effect is called.
struct EffectName {
  std::string_view word;  ///< for programs
  std::string_view text;  ///< for people
};

/// In the order of Effect.
inline constexpr std::array<EffectName, 7> kEffects{{
    {"overwrite", "overwrites a file"},
    {"stop", "stops the run"},
    {"skip", "skips the toplist"},
    {"log", "logs it, goes on"},
    {"show", "shows it wrong"},
    {"lose", "loses something"},
    {"note", "works as meant"},
}};

constexpr const EffectName& effect_name(Effect effect) {
  return kEffects.at(static_cast<std::size_t>(effect));
}

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
  Effect brings = Effect::note;  ///< the gravest effect of what follows from it and is not told

  [[nodiscard]] Effect effect() const { return std::min(kind->effect, brings); }
};
using Findings = std::vector<Finding>;

/// The text in double quotes.
std::string in_quotes(std::string_view text);

/// The number with commas: "93,750".
std::string grouped(std::size_t number);

/// "1 record", "2 records".
std::string count_of(std::size_t count, const char* unit);

}  // namespace toplist::ctl
