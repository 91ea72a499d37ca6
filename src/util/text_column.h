#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace toplist {

/// A list of texts that is searched from a given entry on, entry by entry, for an equal text.
///
/// A search reads a dense column of 32-bit hashes with vector instructions and looks at a text only
/// where its hash agrees. So a linear search among 100,000 texts costs some microseconds, without
/// an index to build or keep.
class TextColumn {
 public:
  void reserve(std::size_t count);
  void append(std::string text);

  [[nodiscard]] bool empty() const noexcept { return texts_.empty(); }

  /// The first entry at or behind `from` that equals `text`.
  [[nodiscard]] std::optional<std::size_t> find(std::string_view text, std::size_t from = 0) const;

  [[nodiscard]] bool contains(std::string_view text) const { return find(text).has_value(); }

 private:
  std::vector<std::string> texts_;
  std::wstring hashes_;  ///< hashes_[i] is that of texts_[i]; wchar_t has 32 bits on Linux.
};

}  // namespace toplist
