#pragma once

#include <fmt/core.h>

#include <cstddef>
#include <string>
#include <utility>

#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/output/value.h"

/// The one place that writes diagnostics: as tables, as lines, and as JSON.
namespace toplist::ctl {

/// Adds a diagnostic whose message is formatted.
template <typename... Args>
void add(Diagnostics& diagnostics, const Kind& kind, Place place, fmt::format_string<Args...> text,
         Args&&... args) {
  diagnostics.push_back(
      {&kind, std::move(place), fmt::format(text, std::forward<Args>(args)...), Effect::note});
}

/// How many diagnostics of a kind a table lists.
enum class Repeats { few, all };

/// A table for people, then a table of what to do about each kind. Of a kind with many diagnostics
/// the first few are listed and the others counted.
std::string diagnostics_table(const Diagnostics& diagnostics, Repeats repeats);

/// A line for each of the first `most` diagnostics, as compilers write them: "FILE:3:14: MESSAGE".
/// A last line counts the others.
std::string diagnostics_lines(const Diagnostics& diagnostics, std::size_t most = 20);

/// "KIND: ADVICE" for each kind, in the order of the diagnostics.
std::string advice_lines(const Diagnostics& diagnostics);

/// A list of objects: "kind", "effect", "file", "record", "line", "column", "message", "advice".
/// Numbers that are not known are left out.
Value diagnostics_value(const Diagnostics& diagnostics);

}  // namespace toplist::ctl
