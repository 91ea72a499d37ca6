#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "util/eight_bytes.h"
#include "util/number.h"

namespace toplist {

inline constexpr char kFieldSeparator = '|';
inline constexpr char kLineSeparator = '\n';

/// Takes the fields (or lines) of a text one after another.
///
/// A separator ends a field, so text after the last separator is a field only if it is not empty:
/// "a|b|" and "a|b" both have two fields, "a||" has "a" and an empty one. The fields are views into
/// the text.
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

  /// Sets `number` to the number that the next field holds, as parse_int32() reads it; false,
  /// leaving `number` alone, when there is no next field.
  bool next_number(std::int32_t& number) {
    // Nearly all numbers are a few digits and a separator: these take one pass without a search.
    const bool is_short = rest_.size() > kShortDigits &&
                          (take_digits<1>(number) || take_digits<2>(number) ||
                           take_digits<3>(number) || take_digits<kShortDigits>(number));
    return is_short || take_any_number(number);
  }

  /// Skips `count` fields, or all that are left if there are fewer.
  void skip(std::size_t count) {
    // Skipped fields are mostly a zero: four of them are eight bytes.
    for (; count >= 4 && rest_.size() >= kEightBytes; count -= 4) {
      if (!are_digit_pairs(rest_.data(), separator_)) break;
      rest_.remove_prefix(kEightBytes);
    }
    if (count == 0) return;
    // Eight bytes at a time as well: a search for the end of each field would be slower.
    std::size_t at = 0;
    for (; rest_.size() - at >= kEightBytes; at += kEightBytes) {
      const ByteCounts separators(rest_.data() + at, separator_);
      if (separators.total() >= count) {
        return rest_.remove_prefix(at + separators.position_of(count) + 1);
      }
      count -= separators.total();
    }
    for (; at < rest_.size(); ++at) {
      if (rest_[at] == separator_ && --count == 0) return rest_.remove_prefix(at + 1);
    }
    rest_ = {};
  }

 private:
  static constexpr std::size_t kShortDigits = 4;

  /// Takes a field of exactly so many digits; false if the next one is different.
  template <std::size_t digits>
  bool take_digits(std::int32_t& number) {
    if (rest_[digits] != separator_) return false;
    bool all_digits = true;
    std::int32_t value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
      all_digits &= is_digit(rest_[i]);
      value = value * 10 + (rest_[i] - '0');
    }
    if (!all_digits) return false;
    number = value;
    rest_.remove_prefix(digits + 1);
    return true;
  }

  // Works on a copy, so that no call gets the address of the reader: a loop then keeps it in
  // registers.
  bool take_any_number(std::int32_t& number) {
    std::string_view rest = rest_;
    const bool found = take_any_number(rest, separator_, number);
    rest_ = rest;
    return found;
  }
  static bool take_any_number(std::string_view& rest, char separator, std::int32_t& number);

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
