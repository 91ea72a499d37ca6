#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace toplist {

/// A line whose tags are being expanded in place: the expanded part, a gap, and the pending rest.
/// Each value is inserted before the rest. It goes into the gap, so no replacement moves the rest
/// of the line.
class PendingText {
 public:
  /// Edits `line`, all of which is pending at first.
  explicit PendingText(std::string& line) : line_(line) {}

  /// The pending rest; valid until the next change.
  [[nodiscard]] std::string_view text() const { return std::string_view(line_).substr(start_); }

  /// The first `count` characters of the rest are expanded.
  void keep(std::size_t count) {
    std::char_traits<char>::move(line_.data() + expanded_, line_.data() + start_, count);
    expanded_ += count;
    start_ += count;
  }

  /// Drops `count` characters of the rest, or all that are left.
  void drop(std::size_t count) { start_ = std::min(start_ + count, line_.size()); }

  void put_in_front(std::string_view value) {
    if (value.size() > start_ - expanded_) widen_gap(value.size());
    start_ -= value.size();
    value.copy(line_.data() + start_, value.size());
  }

  /// Ends the edit: `line` becomes the expanded part and the pending rest.
  void close_gap() { line_.erase(expanded_, start_ - expanded_); }

 private:
  void widen_gap(std::size_t size) {
    const std::size_t room = std::max(size, line_.size());  // doubles: amortised
    line_.insert(start_, room, ' ');
    start_ += room;
  }

  std::string& line_;
  std::size_t expanded_ = 0;  ///< The gap is between the characters expanded
  std::size_t start_ = 0;     ///< and those pending.
};

}  // namespace toplist
