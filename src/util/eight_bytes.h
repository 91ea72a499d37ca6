#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace toplist {

inline constexpr std::size_t kEightBytes = 8;

/// Whether the eight bytes are four pairs of a digit from 0 to 7 and the character, which must not
/// be such a digit.
inline bool are_digit_pairs(const char* bytes, char character) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  const std::uint64_t characters = 0x0100010001000100 * static_cast<unsigned char>(character);
  return (word & 0xfff8fff8fff8fff8) == (characters | 0x0030003000300030);
}

/// Finds a character among eight bytes of text, with arithmetic on all of them at once.
///
/// The bytes are one 64-bit number with the first byte lowest. `counts_` holds, byte by byte, how
/// often the character has been seen up to there.
class ByteCounts {
 public:
  /// `bytes` points to at least eight.
  ByteCounts(const char* bytes, char wanted) noexcept {
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    const std::uint64_t differences = word ^ (kOnes * static_cast<unsigned char>(wanted));
    // A byte's top bit is clear in this sum only if the byte is the character.
    const std::uint64_t nonzero = ((differences & kLowBits) + kLowBits) | differences;
    counts_ = ((~nonzero & kTopBits) >> 7) * kOnes;
  }

  [[nodiscard]] std::size_t total() const noexcept { return counts_ >> 56; }

  /// The position of the nth occurrence, with 1 <= n <= total().
  [[nodiscard]] std::size_t position_of(std::size_t n) const noexcept {
    // A byte keeps its top bit if its count, at most eight, is at least n.
    const std::uint64_t reached = ((counts_ | kTopBits) - kOnes * n) & kTopBits;
    return static_cast<std::size_t>(std::countr_zero(reached)) / 8;
  }

 private:
  static constexpr std::uint64_t kOnes = 0x0101010101010101;
  static constexpr std::uint64_t kTopBits = kOnes * 0x80;
  static constexpr std::uint64_t kLowBits = kOnes * 0x7f;

  std::uint64_t counts_;
};

}  // namespace toplist
