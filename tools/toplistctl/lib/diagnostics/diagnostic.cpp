#include "toplistctl/lib/diagnostics/diagnostic.h"

#include <fmt/core.h>

namespace toplist::ctl {

std::string Place::position() const {
  std::string text;
  const auto add = [&text](const char* unit, std::size_t number) {
    if (number != 0) text += fmt::format("{}{} {}", text.empty() ? "" : ", ", unit, number);
  };
  add("record", record);
  add("line", line);
  add("column", column);
  return text;
}

std::string Place::prefix() const {
  std::string text = file + ":";
  for (const std::size_t number : {line, column}) {
    if (number != 0) text += fmt::format("{}:", number);
  }
  return text + " ";
}

std::string in_quotes(std::string_view text) { return fmt::format("\"{}\"", text); }

std::string grouped(std::size_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, 1, ',');
  return text;
}

std::string count_of(std::size_t count, const char* unit) {
  return fmt::format("{} {}{}", count, unit, count == 1 ? "" : "s");
}

}  // namespace toplist::ctl
