#include "util/sha1.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>

#include "util/file.h"

namespace toplist {
namespace {

constexpr std::size_t kReadBlockBytes = 8000;
/// Several blocks per call: calls for single blocks took 4 % of a digest's time.
constexpr std::size_t kBlocksPerRead = 8;

using Words = std::array<std::uint32_t, 16>;

std::uint32_t big_endian_word(const unsigned char* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
         static_cast<std::uint32_t>(bytes[2]) << 8 | static_cast<std::uint32_t>(bytes[3]);
}

void store_big_endian(std::uint32_t word, unsigned char* bytes) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    *bytes++ = static_cast<unsigned char>(word >> shift);
  }
}

/// Word `t` of the message schedule; only its last sixteen words are kept, in a ring.
template <unsigned t>
std::uint32_t schedule(Words& w) {
  if constexpr (t >= 16) {
    w[t % 16] =
        std::rotl(w[(t - 3) % 16] ^ w[(t - 8) % 16] ^ w[(t - 14) % 16] ^ w[(t - 16) % 16], 1);
  }
  return w[t % 16];
}

template <unsigned t>
std::uint32_t mix(std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  if constexpr (t < 20) return ((c ^ d) & b) ^ d;
  if constexpr (t >= 40 && t < 60) return (b & c) | ((b | c) & d);
  return b ^ c ^ d;
}

template <unsigned t>
void step(Words& w, std::uint32_t a, std::uint32_t& b, std::uint32_t c, std::uint32_t d,
          std::uint32_t& e) {
  constexpr std::array<std::uint32_t, 4> kConstants{0x5a827999, 0x6ed9eba1, 0x8f1bbcdc, 0xca62c1d6};
  e += std::rotl(a, 5) + mix<t>(b, c, d) + kConstants[t / 20] + schedule<t>(w);
  b = std::rotl(b, 30);
}

/// After five steps every word has its own name again, so no word is ever moved.
template <unsigned t>
void steps(Words& w, std::uint32_t& a, std::uint32_t& b, std::uint32_t& c, std::uint32_t& d,
           std::uint32_t& e) {
  if constexpr (t < 80) {
    step<t>(w, a, b, c, d, e);
    step<t + 1>(w, e, a, b, c, d);
    step<t + 2>(w, d, e, a, b, c);
    step<t + 3>(w, c, d, e, a, b);
    step<t + 4>(w, b, c, d, e, a);
    steps<t + 5>(w, a, b, c, d, e);
  }
}

void add_block(std::array<std::uint32_t, 5>& chain, const unsigned char* block) {
  Words w{};
  for (std::size_t i = 0; i < w.size(); ++i) w[i] = big_endian_word(block + 4 * i);
  auto [a, b, c, d, e] = chain;
  steps<0>(w, a, b, c, d, e);
  chain = {chain[0] + a, chain[1] + b, chain[2] + c, chain[3] + d, chain[4] + e};
}

std::size_t bytes_in_block(const Sha1Context& context) {
  return context.length_low / 8 % context.block.size();
}

void add_length(Sha1Context& context, std::size_t bytes) {
  const std::uint64_t bits =
      (static_cast<std::uint64_t>(context.length_high) << 32 | context.length_low) +
      static_cast<std::uint64_t>(bytes) * 8;
  context.length_low = static_cast<std::uint32_t>(bits);
  context.length_high = static_cast<std::uint32_t>(bits >> 32);
}

}  // namespace

void sha1_init(Sha1Context& context) {
  context = {};
  context.chain = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};
}

void sha1_update(Sha1Context& context, const unsigned char* bytes, std::size_t length) {
  std::span<const unsigned char> rest(bytes, length);
  const std::size_t held = bytes_in_block(context);
  add_length(context, length);
  if (held > 0) {
    const std::size_t taken = std::min(context.block.size() - held, rest.size());
    std::copy_n(rest.begin(), taken, context.block.begin() + static_cast<std::ptrdiff_t>(held));
    rest = rest.subspan(taken);
    if (held + taken < context.block.size()) return;
    add_block(context.chain, context.block.data());
  }
  for (; rest.size() >= context.block.size(); rest = rest.subspan(context.block.size())) {
    add_block(context.chain, rest.data());
  }
  std::copy(rest.begin(), rest.end(), context.block.begin());
}

void sha1_final(Sha1Context& context) {
  std::array<unsigned char, 8> length{};
  store_big_endian(context.length_high, length.data());
  store_big_endian(context.length_low, length.data() + 4);

  // A one bit, then zeros up to eight bytes before a block's end, where the length goes.
  constexpr std::array<unsigned char, 64> kPadding{0x80};
  const std::size_t held = bytes_in_block(context);
  sha1_update(context, kPadding.data(), (held < 56 ? 56 : 120) - held);
  sha1_update(context, length.data(), length.size());
  for (std::size_t i = 0; i < context.chain.size(); ++i) {
    store_big_endian(context.chain[i], context.digest.data() + 4 * i);
  }
}

int sha1_file(Sha1Context& context, const char* path) {
  if (path == nullptr) return 0;
  const UniqueFd fd = open_for_reading(path);
  if (!fd) return 0;
  std::array<char, (1 + kBlocksPerRead) * kReadBlockBytes> buffer;
  std::fill_n(buffer.begin(), kReadBlockBytes, '\0');
  char* const bytes = buffer.data() + kReadBlockBytes;  // the block before it is the last one read
  for (std::size_t left = regular_file_size(fd.get()); left > 0;) {
    const std::size_t length = std::min(left, kBlocksPerRead * kReadBlockBytes);
    for (std::size_t i = read_fully(fd.get(), bytes, length); i < length; ++i) {
      bytes[i] = buffer[i];  // after a short read, bytes of the block before remain
    }
    sha1_update(context, reinterpret_cast<const unsigned char*>(bytes), length);
    std::copy_n(buffer.end() - kReadBlockBytes, kReadBlockBytes, buffer.begin());
    left -= length;
  }
  return 1;
}

std::string sha1_digest_text(const std::array<unsigned char, 20>& digest, DigestText mode) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : digest) {
    if (mode == DigestText::decimal) {
      text += std::to_string(byte);
    } else {
      text += kDigits[byte >> 4];
      text += kDigits[byte & 15];
    }
  }
  return text;
}

std::string sha1_file_hex(const std::string& path) {
  Sha1Context context;
  sha1_init(context);
  sha1_file(context, path.c_str());
  sha1_final(context);
  return sha1_digest_text(context.digest, DigestText::hexadecimal);
}

}  // namespace toplist
