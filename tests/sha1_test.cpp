#include "util/sha1.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "support/temp_dir.h"

namespace toplist {
namespace {

using test::TempDir;

constexpr const char* kEmptyDigest = "da39a3ee5e6b4b0d3255bfef95601890afd80709";

std::string digest_of(std::string_view text, std::size_t split) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  Sha1Context context;
  sha1_init(context);
  sha1_update(context, bytes, split);
  sha1_update(context, bytes + split, text.size() - split);
  sha1_final(context);
  return sha1_digest_text(context.digest, DigestText::hexadecimal);
}

TEST(Sha1, GivesThePublishedDigests) {
  const struct {
    std::string text;
    const char* digest;
  } cases[] = {
      {"", kEmptyDigest},
      {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {std::string(55, 'a'), "c1c8bbdc22796e28c0e15163d20899b65621d65a"},
      {std::string(56, 'a'), "c2db330f6083854c99d4b5bfb6e8f29f201be699"},
      {std::string(63, 'a'), "03f09f5b158a7a8cdad920bddc29b81c18a551f5"},
      {std::string(64, 'a'), "0098ba824b5c16427bd7a1122a5a442a25ec644d"},
      {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
  };
  for (const auto& c : cases) {
    for (std::size_t split = 0; split <= std::min<std::size_t>(c.text.size(), 130); ++split) {
      ASSERT_EQ(digest_of(c.text, split), c.digest) << c.text.size() << " bytes, split " << split;
      if (c.text.size() > 1000) break;
    }
  }
}

TEST(Sha1, WritesDigestsInBothForms) {
  const std::array<unsigned char, 20> digest = {0, 1, 9, 10, 15, 16, 99, 100, 255, 128, 0x0a};
  EXPECT_EQ(sha1_digest_text(digest, DigestText::hexadecimal),
            "0001090a0f106364ff800a000000000000000000");
  EXPECT_EQ(sha1_digest_text(digest, DigestText::decimal), "0191015169910025512810000000000");
}

TEST(Sha1, DigestsFiles) {
  const TempDir dir;
  std::string bytes(20000, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i % 251);
  const auto file_of = [&](std::size_t size) {
    return dir.write("f" + std::to_string(size), std::string_view(bytes).substr(0, size));
  };
  const std::string long_path = [&] {
    std::string path = file_of(7999);
    while (path.size() < 1023) path.insert(dir.path().size(), path.size() == 1022 ? "/" : "/.");
    return path;
  }();
  ASSERT_EQ(long_path.size(), 1023U);
  const struct {
    std::string path, digest;
    int opened;
  } cases[] = {
      {file_of(0), kEmptyDigest, 1},
      {file_of(8000), "9916d3d2915338d046999640753484bf2194f2c2", 1},
      {file_of(8001), "bce1abf4b4882159d458cdd5f5b04a4ee22ed941", 1},
      {file_of(20000), "7f21d0bec0ec41aea43854e5bb9e97951d383157", 1},
      {long_path, "379109532a801e4fd23c0e99b8998c860cfb455a", 1},
      {dir.path(), kEmptyDigest, 1},
      {dir.path() + "/missing", kEmptyDigest, 0},
      {std::string(5000, 'p'), kEmptyDigest, 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(sha1_file_hex(c.path), c.digest) << c.path;
    Sha1Context context;
    sha1_init(context);
    EXPECT_EQ(sha1_file(context, c.path.c_str()), c.opened) << c.path;
  }
  Sha1Context context;
  sha1_init(context);
  EXPECT_EQ(sha1_file(context, nullptr), 0);
}

}  // namespace
}  // namespace toplist
