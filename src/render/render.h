#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "render/tag.h"
#include "run/outcomes.h"

namespace toplist {

/// Above this many passes, counted through a template, only the first tag of a line is expanded. A
/// pass is one replacement, or one look at a line without a tag or at a malformed tag.
inline constexpr std::int64_t kPassLimit = 50000;

/// Which lines of a template are kept: those outside "<tlxt>" blocks.
class BlockState {
 public:
  /// Whether the next line is kept.
  bool keeps(std::string_view line);

  /// Whether a block is open: it drops all that follows, up to a "</tlxt>".
  [[nodiscard]] bool inside() const { return inside_; }

 private:
  bool inside_ = false;
};

/// Expands the tags of one template line in place.
///
/// Each value is scanned again together with the text after it, so a value may contain tags
/// (contract: values-are-lines).
/// `passes` counts through the whole template. Once it is above kPassLimit, only the first tag of a
/// line is expanded. A malformed tag leaves the rest of its line unchanged and uses up all
/// remaining passes: it is found again and again until they run out (contract: malformed-tag).
///
/// False, with an unusable line, if a "%%" has fewer than kShortTagLength characters from it to the
/// line's end.
[[nodiscard]] bool expand_tags(std::string& line, RankedRows rows, std::int64_t& passes);

/// A "%%", in the template or in a value, too close to its line's end. Ends the process: such a
/// template must not be published (contract: abnormal-stop).
class StrayMark : public std::out_of_range {
 public:
  StrayMark(const std::string& template_path, std::size_t line);
  [[nodiscard]] std::size_t line() const noexcept { return line_; }

 private:
  std::size_t line_;  ///< of the template, from 1
};

/// The page that a template's text gives: its lines, tags expanded, each ended by a line feed,
/// without those from a line that contains "<tlxt>" to one that contains "</tlxt>". Throws
/// StrayMark.
std::string render_template(const std::string& template_path, std::string_view text,
                            RankedRows rows);

/// Renders one toplist. The page is written only after the whole template has been rendered. If the
/// template or the page cannot be opened, reports that and returns false: then no further toplist
/// may be rendered (contract: last-toplist). Throws StrayMark.
bool render_toplist(const std::string& template_path, const std::string& output_path,
                    RankedRows rows, Outcomes& outcomes);

}  // namespace toplist
