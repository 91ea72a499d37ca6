#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "render/render.h"

namespace toplist::ctl {

/// A tag of a template, or what should be one.
struct TagSpot : TagInLine {
  std::size_t line;     ///< from 1
  std::int64_t passes;  ///< of the template, this one included
};

/// What comes of a template's lines.
struct TemplateVisitor {
  std::function<void(const TagSpot&)> tag;
  std::function<void(const StrayMark&)> stray;       ///< a "%%" that ends the run
  std::function<void(std::size_t line)> open_block;  ///< that the template's end leaves open
};

/// Goes through the tags of a template as a run that expands them against `rows` does. But where
/// the run ends, or has no passes left, this goes on with the next line.
void walk_template(std::string_view text, RankedRows rows, const TemplateVisitor& visitor);

}  // namespace toplist::ctl
