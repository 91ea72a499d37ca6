#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace toplist {

inline constexpr char kFieldSeparator = '|';
inline constexpr char kLineSeparator = '\n';

/// Takes the fields (or lines) of a text one after another.
///
/// A separator ends a field, so text behind the last separator is a field only when it is not
/// empty: "a|b|" and "a|b" both hold two fields, "a||" holds "a" and an empty one. The fields are
/// views into the text.
class FieldReader {
 public:
  explicit FieldReader(std::string_view text, char separator = kFieldSeparator)
      : rest_(text), separator_(separator) {}

  /// Sets `field` to the next field; false, leaving `field` alone, when there is none.
  bool next(std::string_view& field) {
    if (rest_.empty()) return false;
    const std::size_t end = rest_.find(separator_);
    field = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    return true;
  }

  /// Passes over `count` fields, or over all that are left when there are fewer.
  void skip(std::size_t count) {
    if (count == 0) return;
    // Byte by byte: skipped fields are mostly a digit long, too short for a search each to pay.
    for (std::size_t i = 0; i < rest_.size(); ++i) {
      if (rest_[i] == separator_ && --count == 0) return rest_.remove_prefix(i + 1);
    }
    rest_ = {};
  }

 private:
  std::string_view rest_;
  char separator_;
};

/// Takes up to N fields; returns how many there were. The rest of `record` is left empty.
template <std::size_t N>
std::size_t next_record(FieldReader& fields, std::array<std::string_view, N>& record) {
  record = {};
  std::size_t count = 0;
  while (count < N && fields.next(record[count])) ++count;
  return count;
}

}  // namespace toplist
