#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "render/tag.h"

namespace toplist {

/// Above this many passes, counted through a template, only the first tag of a line is expanded. A
/// pass is one replacement, or one look at a line without a tag or at a malformed tag.
inline constexpr std::int64_t kPassLimit = 50000;

/// Which lines of a template are kept: those outside of "<tlxt>" blocks.
class BlockState {
 public:
  /// Whether the next line is kept.
  bool keeps(std::string_view line);

  /// Whether a block is open: it drops all that follows, up to a "</tlxt>".
  [[nodiscard]] bool inside() const { return inside_; }

 private:
  bool inside_ = false;
};

/// A tag that is about to be expanded.
struct TagInLine {
  std::string_view text;   ///< The line from the tag's "%%" on, values put in; valid for the call.
  std::size_t column;      ///< From 1, in the template line.
  bool from_value;         ///< A value brought it in; the column is that of the value's own tag.
  std::optional<Tag> tag;  ///< Nothing when it is malformed.
};
using TagWatcher = std::function<void(const TagInLine&)>;

/// Expands the tags of one template line and appends the result to `page`.
///
/// Each value is scanned again together with what follows it, so a value may bring in tags.
/// `passes` counts through the whole template. Once it is above kPassLimit, only the first tag of a
/// line is expanded. A malformed tag leaves the rest of its line as it stands and uses up all
/// passes that are left, on purpose: it is found again and again until they run out.
///
/// When a "%%" has fewer than kShortTagLength characters from it to the line's end, returns its
/// column in the template line, counted from 1, or that of the tag whose value brought it in;
/// `page` is of no use any more.
///
/// `watcher` may be null, as it is in a run.
std::optional<std::size_t> expand_tags(std::string_view line, RankedRows rows, std::int64_t& passes,
                                       std::string& page, const TagWatcher* watcher = nullptr);

/// A "%%" too close to its line's end; both count from 1.
struct StrayMark {
  std::size_t line;
  std::size_t column;
};

/// Appends to `page` what the template's text gives: its lines, tags expanded, each ended by a line
/// feed, without those from a line that contains "<tlxt>" to one that contains "</tlxt>".
/// Returns where the template is malformed, if it is.
std::optional<StrayMark> render_template(std::string_view text, RankedRows rows, std::string& page);

/// Renders one toplist. The output file is written in place, and only after the whole template has
/// been rendered. False, logged, when the template or the output file cannot be opened: then no
/// further toplist is to be rendered, on purpose.
///
/// Throws std::out_of_range for a "%%" too close to its line's end, naming template, line and
/// column. That is meant to end the process: such a template must not be published.
bool render_toplist(const std::string& template_path, const std::string& output_path,
                    RankedRows rows);

}  // namespace toplist
