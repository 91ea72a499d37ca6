#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "support/temp_dir.h"
#include "support/text_cases.h"
#include "util/fields.h"
#include "util/file.h"
#include "util/number.h"
#include "util/text.h"
#include "util/text_column.h"
#include "util/uninterrupted.h"
#include "util/unique_fd.h"

namespace toplist {
namespace {

using namespace std::string_view_literals;
using test::TempDir;

TEST(Fields, TextBehindTheLastSeparatorCountsWhenItIsNotEmpty) {
  test::expect_cases("FieldReader", [](const std::string& text) {
    std::string fields;
    FieldReader reader(text);
    for (std::string_view field; reader.next(field);) fields.append("<").append(field) += '>';
    return fields;
  });
}

// As one field after the other would be: by eight bytes at a time, and four zeros at a time.
TEST(Fields, SkipPassesOverAnyFields) {
  constexpr std::string_view kAlphabet = "00000000||||||||179:;x\n";
  std::mt19937 random(5);
  for (int i = 0; i < 20000; ++i) {
    std::string text(random() % 60, ' ');
    for (char& c : text) c = kAlphabet[random() % kAlphabet.size()];
    const char separator = i % 4 == 0 ? ';' : '|';
    const std::size_t count = random() % 24;
    FieldReader skipping(text, separator), reading(text, separator);
    skipping.skip(count);
    std::string_view skipped, field = "untouched", expected = field;  // and so it is at the end
    for (std::size_t n = 0; n < count; ++n) reading.next(skipped);
    ASSERT_EQ(skipping.next(field), reading.next(expected)) << text;
    ASSERT_EQ(field.data(), expected.data()) << text << ' ' << count;
  }
}

// That is the low 32 bits of a 64-bit number, which stays at its limits.
TEST(Number, ReadsAsTheCLibraryDoes) {
  constexpr std::string_view kAlphabet = "0123456789012345678901234567899+- \t\n\v\f\rx|\0"sv;
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    std::string text(random() % 24, ' ');
    for (char& c : text) c = kAlphabet[random() % kAlphabet.size()];
    const long value = std::strtol(text.c_str(), nullptr, 10);
    ASSERT_EQ(parse_int32(text), static_cast<std::int32_t>(value)) << '"' << text << '"';
  }
}

TEST(Text, ReplacementsAreNotReplacedAgain) {
  std::string text = "aaa;";
  replace_all(text, "aa", "b");
  EXPECT_EQ(text, "ba;");
  replace_all(text, ";", "&#59;");
  EXPECT_EQ(text, "ba&#59;");
  std::string numbers = "n";
  for (const std::int32_t n : {0, -7, INT32_MIN, INT32_MAX}) append_number(numbers += ' ', n);
  EXPECT_EQ(numbers, "n 0 -7 -2147483648 2147483647");
}

// Among so many texts some share the lower half of their hash, which is all that is compared first.
TEST(TextColumn, FindsJustTheTextsThatAreEqual) {
  std::vector<std::string> texts;
  for (int i = 0; i < 250000; ++i) texts.push_back("d" + std::to_string(i) + ".com");
  texts.push_back("d7.com");
  const std::vector<std::string_view> views(texts.begin(), texts.end());
  const SoughtTexts all(views), none({});
  std::map<std::uint32_t, std::string_view> by_hash;
  int pairs = 0;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    std::vector<std::size_t> found;
    const auto note = [&found](std::size_t t) {
      found.push_back(t);
      return true;
    };
    all.find(texts[i], note);
    none.find(texts[i], note);
    const bool twice = texts[i] == "d7.com";
    ASSERT_EQ(found, twice ? std::vector<std::size_t>({7, 250000}) : std::vector{i});
    const auto [other, is_first] = by_hash.try_emplace(hash_of(texts[i]), texts[i]);
    if (is_first || twice) continue;
    ++pairs;
    TextColumn column;
    EXPECT_TRUE(column.empty() && !column.contains(texts[i]));
    column.append(other->second);
    EXPECT_FALSE(column.contains(texts[i]));
    column.append(texts[i]);
    EXPECT_TRUE(column.contains(texts[i]) && column.contains(other->second) && !column.empty());
  }
  EXPECT_GT(pairs, 0);
}

TEST(File, ReadsWhatWasWritten) {
  const TempDir dir;
  FileBuffer buffer;
  const std::string large(3'000'001, 'x');
  for (const std::string_view bytes : {""sv, "a\0\xff\n"sv, std::string_view(large), "short"sv}) {
    ASSERT_TRUE(write_file(dir.path() + "/file", bytes));
    ASSERT_TRUE(buffer.read(dir.path() + "/file"));
    EXPECT_EQ(buffer.text(), bytes);
  }
  std::filesystem::create_hard_link(dir.path() + "/file", dir.path() + "/other name");
  ASSERT_TRUE(write_file(dir.path() + "/file", "in place"));
  ASSERT_TRUE(buffer.read(dir.path() + "/other name"));
  EXPECT_EQ(buffer.text(), "in place");
  EXPECT_FALSE(buffer.read(dir.path() + "/missing"));
  EXPECT_EQ(buffer.text(), "");
  EXPECT_TRUE(buffer.read(dir.path()));
  EXPECT_EQ(buffer.text(), "");
  EXPECT_FALSE(write_file(dir.path() + "/no/file", "x"));
  EXPECT_FALSE(write_file(dir.path(), "x"));
  EXPECT_FALSE(write_fully(UniqueFd(::open("/dev/full", O_WRONLY | O_CLOEXEC)).get(), "x"));
}

TEST(File, DescriptorsAreOwnedAndCloseOnExec) {
  UniqueFd first = open_for_reading("/dev/null");
  const int fd = first.get();
  ASSERT_TRUE(first);
  EXPECT_NE(::fcntl(fd, F_GETFD) & FD_CLOEXEC, 0);
  {
    const UniqueFd second(std::move(first));
    EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): a moved one owns nothing
    EXPECT_EQ(second.get(), fd);
  }
  EXPECT_EQ(::fcntl(fd, F_GETFD), -1);

  first = open_for_reading("/dev/null");
  UniqueFd third = open_for_reading("/dev/zero");
  const int replaced = first.get();
  const int taken = third.get();
  first = std::move(third);
  EXPECT_EQ(first.get(), taken);
  EXPECT_EQ(::fcntl(replaced, F_GETFD), -1);
}

TEST(File, ADescriptorMayBeTheLowest) {
  const int kept = ::dup(STDIN_FILENO);
  ::close(STDIN_FILENO);
  {
    const UniqueFd lowest = open_for_reading("/dev/null");
    EXPECT_TRUE(lowest);
    EXPECT_EQ(lowest.get(), 0);
  }
  EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1);
  ::dup2(kept, STDIN_FILENO);
  ::close(kept);
}

TEST(File, CallsAreMadeAgainOnlyWhenASignalCutThemShort) {
  struct Outcome {
    int result;
    int error;
  };
  const struct {
    std::vector<Outcome> outcomes;  // of one call after the other
    int result;
  } cases[] = {
      {{{-1, EINTR}, {-1, EINTR}, {3, 0}, {4, 0}}, 3},
      {{{-1, EIO}, {1, 0}}, -1},
      {{{0, EINTR}, {1, 0}}, 0},  // the error of an earlier call
  };
  for (const auto& c : cases) {
    auto outcome = c.outcomes.begin();
    const int result = uninterrupted([&outcome] {
      errno = outcome->error;
      return outcome++->result;
    });
    EXPECT_EQ(result, c.result);
  }
}

TEST(File, ReadsAPipeToItsEnd) {
  const TempDir dir;
  const std::string path = dir.path() + "/pipe";
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  const std::string bytes(300'000, 'x');
  std::thread writer([&] { write_file(path, bytes); });
  FileBuffer buffer;
  EXPECT_TRUE(buffer.read(path));
  EXPECT_EQ(buffer.text(), bytes);
  writer.join();
}

}  // namespace
}  // namespace toplist
