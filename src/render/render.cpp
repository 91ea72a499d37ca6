#include "render/render.h"

#include <algorithm>
#include <optional>

#include "render/pending_text.h"
#include "util/fields.h"
#include "util/file.h"
#include "util/text.h"

namespace toplist {

bool BlockState::keeps(std::string_view line) {
  if (!contains(line, "xt>")) return !inside_;  // few lines hold that "x"
  if (contains(line, "</tlxt>")) {
    inside_ = false;
    return false;
  }
  if (contains(line, "<tlxt>")) inside_ = true;
  return !inside_;
}

bool expand_tags(std::string& line, RankedRows rows, std::int64_t& passes) {
  std::size_t mark = line.find(kTagMark);
  if (mark == std::string::npos) {
    ++passes;
    return true;
  }
  PendingText pending(line);
  std::string value;
  do {
    const std::string_view text = pending.text();
    if (text.size() - mark < kShortTagLength) return false;
    const std::optional<Tag> tag = read_tag(text.substr(mark));
    if (!tag) {
      // Only the pass limit ends this search: the tag is found again each time (contract:
      // malformed-tag).
      passes = std::max(passes, kPassLimit) + 1;
      break;
    }
    value.clear();
    const std::size_t replaced = expand_tag(*tag, rows, value);
    pending.keep(mark);
    pending.drop(replaced);
    pending.put_in_front(value);
    // The text before the value contains no mark, nor half of one at its end: the search continues
    // here.
    mark = ++passes > kPassLimit ? std::string_view::npos : pending.text().find(kTagMark);
  } while (mark != std::string_view::npos);
  pending.close_gap();
  return true;
}

StrayMark::StrayMark(const std::string& template_path, std::size_t line)
    : std::out_of_range(
          template_path + ", line " + std::to_string(line) +
          ": a \"%%\" there, or in a value put in there, is too close to the end of the line"),
      line_(line) {}

std::string render_template(const std::string& template_path, std::string_view text,
                            RankedRows rows) {
  std::string page;
  page.reserve(text.size());
  std::int64_t passes = 0;
  BlockState block;
  FieldReader lines(text, kLineSeparator);
  std::string line;
  std::string_view template_line;
  for (std::size_t number = 1; lines.next(template_line); ++number) {
    if (!block.keeps(template_line)) continue;
    line = template_line;
    if (!expand_tags(line, rows, passes)) throw StrayMark(template_path, number);
    page += line;
    page += '\n';
  }
  return page;
}

bool render_toplist(const std::string& template_path, const std::string& output_path,
                    RankedRows rows, Outcomes& outcomes) {
  FileBuffer file;
  if (!file.read(template_path)) {
    outcomes.log(unopened_file(template_path, Severity::run_ends));
    return false;
  }
  if (outcomes.write_page(output_path, render_template(template_path, file.text(), rows))) {
    return true;
  }
  outcomes.log(unopened_file(output_path, Severity::run_ends));
  return false;
}

}  // namespace toplist
