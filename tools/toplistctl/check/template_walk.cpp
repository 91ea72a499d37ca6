#include "toplistctl/check/template_walk.h"

#include <string>

#include "util/fields.h"

namespace toplist::ctl {
namespace {

/// Goes through the tags of one kept line after the other.
class LineWalk {
 public:
  LineWalk(RankedRows rows, const TemplateVisitor& visitor) : rows_(rows), visitor_(visitor) {}

  void walk(std::string_view line, std::size_t number) {
    const std::int64_t before = passes_;
    const TagWatcher watcher = [this, number](const TagInLine& tag) {
      visitor_.tag({tag, number, ++passes_});
    };
    std::int64_t own_passes = 0;  // a malformed tag must not hide those of the lines behind it
    std::string page;
    if (const auto column = expand_tags(line, rows_, own_passes, page, &watcher)) {
      visitor_.stray({number, *column});
    }
    if (passes_ == before) ++passes_;  // a line without tags costs a pass, too
  }

 private:
  RankedRows rows_;
  const TemplateVisitor& visitor_;
  std::int64_t passes_ = 0;
};

}  // namespace

void walk_template(std::string_view text, RankedRows rows, const TemplateVisitor& visitor) {
  LineWalk walk(rows, visitor);
  BlockState block;
  std::size_t opened = 0;
  FieldReader lines(text, kLineSeparator);
  std::string_view line;
  for (std::size_t number = 1; lines.next(line); ++number) {
    const bool was_inside = block.inside();
    if (block.keeps(line)) walk.walk(line, number);
    if (block.inside() && !was_inside) opened = number;
  }
  if (block.inside()) visitor.open_block(opened);
}

}  // namespace toplist::ctl
