#include "render/render.h"

#include <algorithm>
#include <stdexcept>

#include "run/sys_log.h"
#include "util/fields.h"
#include "util/file.h"
#include "util/text.h"

namespace toplist {
namespace {

/// The part of a line that is not in the page yet. Values are put in front of it again and again,
/// so it keeps free room there: no replacement moves the rest of the line.
class PendingText {
 public:
  explicit PendingText(std::string_view text) : buffer_(text) {}

  [[nodiscard]] std::string_view text() const { return std::string_view(buffer_).substr(start_); }

  /// Drops `count` characters, or all that are left.
  void drop(std::size_t count) { start_ = std::min(start_ + count, buffer_.size()); }

  void put_in_front(std::string_view value) {
    if (value.size() > start_) make_room(value.size());
    start_ -= value.size();
    value.copy(buffer_.data() + start_, value.size());
  }

 private:
  void make_room(std::size_t size) {
    const std::size_t room = std::max(size, buffer_.size());  // doubles: amortised
    buffer_.insert(0, room, ' ');
    start_ += room;
  }

  std::string buffer_;
  std::size_t start_ = 0;
};

}  // namespace

bool BlockState::keeps(std::string_view line) {
  if (contains(line, "</tlxt>")) {
    inside_ = false;
    return false;
  }
  if (contains(line, "<tlxt>")) inside_ = true;
  return !inside_;
}

std::optional<std::size_t> expand_tags(std::string_view line, RankedRows rows, std::int64_t& passes,
                                       std::string& page, const TagWatcher* watcher) {
  std::size_t mark = line.find(kTagMark);
  if (mark == std::string_view::npos) {
    ++passes;
    page += line;
    return std::nullopt;
  }
  PendingText pending(line);
  std::string value;
  std::size_t untouched = line.size();  // this many characters at the end are still the template's
  std::size_t column = 0;
  do {
    const std::string_view text = pending.text();
    const std::size_t left = text.size() - mark;
    if (left <= untouched) column = line.size() - left + 1;
    if (left < kShortTagLength) return column;

    const std::optional<Tag> tag = read_tag(text.substr(mark));
    if (watcher != nullptr) (*watcher)({text.substr(mark), column, left > untouched, tag});
    if (!tag) {
      // Meant: only the pass limit ends the search for a tag that never goes away.
      passes = std::max(passes, kPassLimit) + 1;
      break;
    }
    value.clear();
    const std::size_t replaced = expand_tag(*tag, rows, value);
    page += text.substr(0, mark);
    pending.drop(mark + replaced);
    untouched = std::min(untouched, pending.text().size());
    pending.put_in_front(value);
    // Nothing in front of the value holds a mark or ends in half of one: the search goes on here.
    mark = ++passes > kPassLimit ? std::string_view::npos : pending.text().find(kTagMark);
  } while (mark != std::string_view::npos);
  page += pending.text();
  return std::nullopt;
}

std::optional<StrayMark> render_template(std::string_view text, RankedRows rows,
                                         std::string& page) {
  std::int64_t passes = 0;
  BlockState block;
  FieldReader lines(text, kLineSeparator);
  std::string_view line;
  for (std::size_t number = 1; lines.next(line); ++number) {
    if (!block.keeps(line)) continue;
    if (const auto column = expand_tags(line, rows, passes, page)) {
      return StrayMark{number, *column};
    }
    page += '\n';
  }
  return std::nullopt;
}

bool render_toplist(const std::string& template_path, const std::string& output_path,
                    RankedRows rows) {
  FileBuffer file;
  if (!read_or_log(template_path, Severity::run_ends, file)) return false;
  std::string page;
  if (const auto stray = render_template(file.text(), rows, page)) {
    throw std::out_of_range(
        template_path + ", line " + std::to_string(stray->line) + ", column " +
        std::to_string(stray->column) +
        ": a \"%%\" there, or in the value put in there, is too close to the end of the line");
  }
  if (!write_file(output_path, page)) {
    log_unopened_file(output_path, Severity::run_ends);
    return false;
  }
  return true;
}

}  // namespace toplist
