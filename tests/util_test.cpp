#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "support/temp_dir.h"
#include "util/fields.h"
#include "util/file.h"
#include "util/number.h"
#include "util/text.h"
#include "util/text_column.h"
#include "util/unique_fd.h"

namespace toplist {
namespace {

using namespace std::string_view_literals;
using test::TempDir;

TEST(Fields, TextBehindTheLastSeparatorCountsWhenItIsNotEmpty) {
  const struct {
    std::string_view text;
    std::vector<std::string_view> fields;
  } cases[] = {
      {"", {}},
      {"|", {""}},
      {"a|b|", {"a", "b"}},
      {"a|b", {"a", "b"}},
      {"||a", {"", "", "a"}},
      {"a|\nb|c\r\n", {"a", "\nb", "c\r\n"}},
      {"a\0b|c"sv, {"a\0b"sv, "c"}},
  };
  for (const auto& c : cases) {
    std::vector<std::string_view> fields;
    FieldReader reader(c.text);
    for (std::string_view field; reader.next(field);) fields.push_back(field);
    EXPECT_EQ(fields, c.fields) << c.text;
  }
}

TEST(Fields, SkipStopsAtTheEndOfTheText) {
  FieldReader lines("a\nb\n\nd", kLineSeparator);
  std::string_view line = "untouched";
  lines.skip(3);
  ASSERT_TRUE(lines.next(line));
  EXPECT_EQ(line, "d");
  lines.skip(7);
  EXPECT_FALSE(lines.next(line));
  EXPECT_EQ(line, "d");
}

struct NumberCase {
  std::string_view text;
  std::int32_t value;
};

TEST(Number, IsTheLow32BitsOfTheLeadingDecimal) {
  constexpr NumberCase kCases[] = {
      {"", 0},
      {" \t\n\v\f\r42", 42},
      {"- 42", 0},
      {"1\0002"sv, 1},
      {"2147483648", INT32_MIN},
      {"3000000000", -1294967296},
      {"9223372036854775807", -1},
      {"9223372036854775808", -1},
      {"-9223372036854775807", 1},
      {"-9223372036854775808", 0},
      {"-9223372036854775809", 0},
  };
  for (const auto& c : kCases) EXPECT_EQ(parse_int32(c.text), c.value) << c.text;
}

TEST(Number, ReadsAsTheCLibraryDoes) {
  constexpr std::string_view kAlphabet = "0123456789012345678901234567899+- \tx|";
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

// Searches go many entries at a time: entries at either end of every such block must be found.
TEST(TextColumn, FindsTheFirstEqualTextFromAPosition) {
  for (const std::size_t size : {1U, 2U, 127U, 128U, 129U, 255U, 256U, 257U, 300U}) {
    TextColumn column;
    EXPECT_TRUE(column.empty());
    for (std::size_t i = 0; i < size; ++i) column.append("d" + std::to_string(i % 200));
    EXPECT_FALSE(column.empty());
    for (std::size_t i = 0; i < size; ++i) {
      const std::string text = "d" + std::to_string(i % 200);
      ASSERT_EQ(column.find(text), i % 200) << size;
      ASSERT_EQ(column.find(text, i), i) << size;
      const bool again = i < 200 && i + 200 < size;
      ASSERT_EQ(column.find(text, i + 1), again ? std::optional(i + 200) : std::nullopt) << size;
    }
    EXPECT_FALSE(column.contains("d200"));
    EXPECT_FALSE(column.contains("D0"));
    EXPECT_FALSE(column.contains(""));
    EXPECT_FALSE(column.find("d0", size + 300));
  }
}

TEST(TextColumn, TellsTextsOfEqualHashesApart) {
  // Among so many texts some share the lower half of their hash, which is all a column keeps.
  std::map<std::uint32_t, std::string> texts;
  int pairs = 0;
  for (int i = 0; i < 250000; ++i) {
    const std::string text = "d" + std::to_string(i) + ".com";
    const auto hash = static_cast<std::uint32_t>(std::hash<std::string_view>{}(text));
    const auto [other, fresh] = texts.try_emplace(hash, text);
    if (fresh) continue;
    ++pairs;
    TextColumn column;
    column.append(other->second);
    EXPECT_FALSE(column.contains(text));
    column.append(text);
    EXPECT_EQ(column.find(text), 1U);
    EXPECT_EQ(column.find(other->second), 0U);
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
  EXPECT_FALSE(buffer.read(dir.path() + "/missing"));
  EXPECT_EQ(buffer.text(), "");
  EXPECT_TRUE(buffer.read(dir.path()));
  EXPECT_EQ(buffer.text(), "");
  EXPECT_FALSE(write_file(dir.path() + "/no/file", "x"));
  EXPECT_FALSE(write_file(dir.path(), "x"));
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

TEST(File, ReadsWhatComesInPieces) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const UniqueFd reading(ends[0]);
  UniqueFd writing(ends[1]);
  std::thread writer([&writing] {
    for (const char* piece : {"ab", "c", "def"}) {
      write_fully(writing.get(), piece);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    writing = UniqueFd();
  });
  char bytes[16] = {};
  EXPECT_EQ(read_fully(reading.get(), bytes, sizeof bytes), 6U);
  EXPECT_STREQ(bytes, "abcdef");
  writer.join();
}

}  // namespace
}  // namespace toplist
