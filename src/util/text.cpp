#include "util/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

namespace toplist {
namespace {

bool is_control(char c) { return static_cast<unsigned char>(c) < 32 || c == 127; }

}  // namespace

void replace_all(std::string& text, std::string_view from, std::string_view to) {
  std::size_t at = text.find(from);
  if (at == std::string::npos) return;
  std::string result;
  std::size_t copied = 0;
  for (; at != std::string::npos; at = text.find(from, copied)) {
    result.append(text, copied, at - copied).append(to);
    copied = at + from.size();
  }
  text = result.append(text, copied);
}

void append_number(std::string& text, std::int32_t number) {
  std::array<char, 11> digits{};  // "-2147483648"
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  text.append(digits.data(), result.ptr);
}

void lower_case(std::string& text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
}

bool has_control_character(std::string_view text) {
  return std::any_of(text.begin(), text.end(), is_control);
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string_view trim_control_characters(std::string_view text) {
  while (!text.empty() && is_control(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_control(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace toplist
