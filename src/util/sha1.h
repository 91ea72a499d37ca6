#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace toplist {

/// The state of one SHA-1 digest (FIPS 180-1). A plain value without heap memory.
struct Sha1Context {
  std::array<std::uint32_t, 5> chain;    ///< H0 to H4
  std::uint32_t length_low;              ///< message length in bits, lower half
  std::uint32_t length_high;             ///< and upper half
  std::array<unsigned char, 64> block;   ///< the bytes that do not fill a block yet
  std::array<unsigned char, 20> digest;  ///< set by sha1_final
};

/// The format in which sha1_digest_text() writes a digest.
enum class DigestText {
  hexadecimal = 0,  ///< 40 lower-case hexadecimal digits
  decimal = 1,      ///< each byte in decimal, unpadded and unseparated: 20 to 60 digits
};

void sha1_init(Sha1Context& context);
void sha1_update(Sha1Context& context, const unsigned char* bytes, std::size_t length);
/// Pads the message and leaves the digest in `context.digest`.
void sha1_final(Sha1Context& context);

/// Feeds the contents of the file at `path` into `context`, up to the size it has when opened.
/// Returns 0 when `path` is null or the file cannot be opened, otherwise 1. A directory counts as
/// an empty file. The results of reads are not checked: a file that shrinks meanwhile is hashed as
/// if read in blocks of 8000 bytes, where short reads leave earlier bytes in the block.
int sha1_file(Sha1Context& context, const char* path);

std::string sha1_digest_text(const std::array<unsigned char, 20>& digest, DigestText mode);

/// The digest of a file as 40 lower-case hexadecimal digits. A file that cannot be opened has the
/// digest of the empty one, so check values do not tell the two apart (contract: empty-digest).
std::string sha1_file_hex(const std::string& path);

}  // namespace toplist
