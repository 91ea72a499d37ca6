#include "toplistctl/lib/output/printable.h"

#include <cstddef>

#include "util/text.h"

namespace toplist::ctl {
namespace {

constexpr char kLeadByte = '\xC2';  ///< in front of bytes 0x80 to 0x9F: a control character

bool is_control_pair(std::string_view text) {
  return text.size() == 2 && text[0] == kLeadByte &&
         (static_cast<unsigned char>(text[1]) >> 5) == 4;
}

std::string masked(std::string_view text, std::string_view kept) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (is_control_pair(text.substr(i, 2))) {
      result += '?';
      ++i;
    } else if (has_control_character(text.substr(i, 1)) && !contains(kept, text.substr(i, 1))) {
      result += '?';
    } else {
      result += text[i];
    }
  }
  return result;
}

}  // namespace

std::string printable(std::string_view text) { return masked(text, ""); }

std::string printable_lines(std::string_view text) { return masked(text, "\n\t"); }

}  // namespace toplist::ctl
