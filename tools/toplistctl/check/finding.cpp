#include "toplistctl/check/finding.h"

namespace toplist::ctl {
std::string Place::text() const {
  std::string text;
  const auto add = [&text](const char* unit, std::size_t number) {
    if (number == 0) return;
    if (!text.empty()) text += ", ";
    text += unit + std::to_string(number);
  };
  add("record ", record);
  add("line ", line);
  add("column ", column);
  return text;
}

std::string in_quotes(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string grouped(std::size_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, 1, ',');
  return text;
}

std::string count_of(std::size_t count, const char* unit) {
  return std::to_string(count) + " " + unit + (count == 1 ? "" : "s");
}

}  // namespace toplist::ctl
