#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string_view>

#include "render/tag.h"

namespace toplist::ctl {

struct ToplistView;

/// A tag of a template, or what should be one, about to be expanded.
struct TagSpot {
  std::string_view text;   ///< The line from the tag's "%%" on, values put in; valid for the call.
  std::size_t line;        ///< from 1
  std::size_t column;      ///< From 1, in the template's line.
  bool from_value;         ///< A value brought it in; the column is that of the value's own tag.
  std::optional<Tag> tag;  ///< Nothing when it is malformed.
  std::int64_t passes;     ///< of the template, this one included
};

/// A "%%" that ends the run; both count from 1.
struct StraySpot {
  std::size_t line;
  std::size_t column;
};

/// What comes of a template's lines.
struct TemplateVisitor {
  std::function<void(const TagSpot&)> tag = [](const TagSpot&) {};
  std::function<void(const StraySpot&)> stray = [](const StraySpot&) {};
  /// The line of a block that the template's end leaves open.
  std::function<void(std::size_t line)> open_block = [](std::size_t) {};
};

/// Goes through the tags of a template as a run that expands them against `rows` does. But where
/// the run ends, or has no passes left, this goes on with the next line.
void walk_template(std::string_view text, RankedRows rows, const TemplateVisitor& visitor);

/// The ranks that the toplist's template names: its places for trades. Those in tags that a value
/// brings in do not count. Empty when the template cannot be read.
std::set<std::int32_t> ranks_named(const ToplistView& toplist);
std::set<std::int32_t> ranks_named(std::string_view text, RankedRows rows);

}  // namespace toplist::ctl
