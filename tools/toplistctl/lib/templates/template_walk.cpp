#include "toplistctl/lib/templates/template_walk.h"

#include <algorithm>
#include <string>

#include "render/pending_text.h"
#include "render/render.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_view/site_view.h"
#include "util/fields.h"

namespace toplist::ctl {
namespace {

/// Goes through the tags of one kept line after the other.
class LineWalk {
 public:
  LineWalk(RankedRows rows, const TemplateVisitor& visitor) : rows_(rows), visitor_(visitor) {}

  void walk(std::string_view line, std::size_t number) {
    const std::int64_t last_pass = passes_ + kPassLimit;  // a value may bring in its own tag
    std::string text_left(line);
    PendingText pending(text_left);
    std::size_t untouched = line.size();  // this many characters at the end are still the line's
    std::size_t column = 0;
    std::string value;
    std::size_t mark = line.find(kTagMark);
    if (mark == std::string_view::npos) ++passes_;  // a line without tags costs a pass, too
    for (; mark != std::string_view::npos; mark = pending.text().find(kTagMark)) {
      pending.drop(mark);
      const std::string_view text = pending.text();
      if (text.size() <= untouched) column = line.size() - text.size() + 1;
      if (text.size() < kShortTagLength) return visitor_.stray({number, column});

      const std::optional<Tag> tag = read_tag(text);
      const bool from_value = text.size() > untouched;
      visitor_.tag({text, number, column, from_value, tag, ++passes_});
      if (!tag || (from_value && passes_ > last_pass)) return;
      value.clear();
      pending.drop(expand_tag(*tag, rows_, value));
      untouched = std::min(untouched, pending.text().size());
      pending.put_in_front(value);
    }
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

std::set<std::int32_t> ranks_named(const ToplistView& toplist) {
  return ranks_named(read_file(toplist.definition->template_path).value_or(""), toplist.passing);
}

std::set<std::int32_t> ranks_named(std::string_view text, RankedRows rows) {
  std::set<std::int32_t> ranks;
  walk_template(text, rows, {.tag = [&ranks](const TagSpot& spot) {
                  if (spot.tag && !spot.from_value) ranks.insert(spot.tag->rank);
                }});
  return ranks;
}

}  // namespace toplist::ctl
