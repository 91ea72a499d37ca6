#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace toplist {

/// The blanks that may precede a number.
constexpr bool is_blank(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

constexpr bool is_digit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Reads a signed decimal number: blanks, an optional sign, then digits up to the first other
/// character. Without digits the result is 0.
///
/// The value is clamped to 64 bits, and its low 32 bits are the result: "3000000000" gives
/// -1294967296, a number above 64 bits gives -1, one below them 0.
constexpr std::int32_t parse_int32(std::string_view text) noexcept {
  std::size_t i = 0;
  while (i < text.size() && is_blank(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';

  const std::uint64_t limit = static_cast<std::uint64_t>(INT64_MAX) + (negative ? 1U : 0U);
  std::uint64_t magnitude = 0;
  for (; i < text.size() && is_digit(text[i]); ++i) {
    const auto digit = static_cast<std::uint64_t>(text[i] - '0');
    if (magnitude > (limit - digit) / 10) {
      magnitude = limit;
      break;
    }
    magnitude = magnitude * 10 + digit;
  }
  const auto low = static_cast<std::uint32_t>(magnitude);
  return static_cast<std::int32_t>(negative ? 0U - low : low);
}

/// a + b modulo 2^32.
constexpr std::int32_t wrapping_add(std::int32_t a, std::int32_t b) noexcept {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

}  // namespace toplist
