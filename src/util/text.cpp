#include "util/text.h"

#include <array>
#include <charconv>
#include <cstddef>

namespace toplist {

void replace_all(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

void append_number(std::string& text, std::int32_t number) {
  std::array<char, 11> digits{};  // "-2147483648"
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  text.append(digits.data(), result.ptr);
}

}  // namespace toplist
