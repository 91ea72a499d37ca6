#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// What is wrong with a file that people or other programs write: a site's file, a template's
/// source, a CSV file. One type for all of them, so that it is printed, counted and written as JSON
/// in one place.
namespace toplist::ctl {

/// What a run does about a fault, the worst first.
enum class Effect {
  overwrite,  ///< overwrites a file of the site that is no page
  stop,       ///< ends, or builds no later toplist
  skip,       ///< skips this toplist
  log,        ///< adds a line to the log and goes on without the file
  show,       ///< shows wrong content, and logs nothing
  lose,       ///< loses a log line or a thumbnail, and logs nothing
  note,       ///< nothing: the fault is only worth knowing
};

/// The names of an effect.
struct EffectName {
  std::string_view word;  ///< for programs
  std::string_view text;  ///< for people
};

/// In the order of Effect.
inline constexpr std::array<EffectName, 7> kEffects{{
    {"overwrite", "overwrites a file"},
    {"stop", "stops the run"},
    {"skip", "skips a toplist"},
    {"log", "adds a log line"},
    {"show", "shows wrong content"},
    {"lose", "loses something"},
    {"note", "none"},
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

/// Where something is. Numbers count from 1; 0 means that it is not known or does not apply.
struct Place {
  std::string file;  ///< relative to the site's root, or as the command line names it
  std::size_t record = 0;
  std::size_t line = 0;
  std::size_t column = 0;

  /// Such as "line 3, column 14", without the file; empty when all numbers are 0.
  [[nodiscard]] std::string position() const;

  /// As compilers write it, so that editors find the place: "FILE:3:14: ".
  [[nodiscard]] std::string prefix() const;

  auto operator<=>(const Place&) const = default;
};

/// One fault.
struct Diagnostic {
  const Kind* kind;
  Place place;
  std::string message;
  Effect brings = Effect::note;  ///< the worst effect of the faults that it causes

  [[nodiscard]] Effect effect() const { return std::min(kind->effect, brings); }
  bool operator==(const Diagnostic&) const = default;
};
using Diagnostics = std::vector<Diagnostic>;

/// The text in double quotes.
std::string in_quotes(std::string_view text);

/// The number with commas: "93,750".
std::string grouped(std::size_t number);

/// "1 record", "2 records".
std::string count_of(std::size_t count, const char* unit);

}  // namespace toplist::ctl
