#include "util/shell.h"

#include <algorithm>
#include <cstdlib>

#include "util/number.h"
#include "util/text.h"

namespace toplist {
namespace {

bool is_plain(char c) {
  const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  return letter || is_digit(c) || std::string_view("._:/-").find(c) != std::string_view::npos;
}

}  // namespace

std::string shell_word(std::string_view text) {
  std::string word(text);
  if (std::all_of(word.begin(), word.end(), is_plain)) return word;
  replace_all(word, "'", "'\\''");
  return "'" + word + "'";
}

void run_shell_command(const std::string& command) {
  // The commands are the operator's own (downloaders, the image tool) and are meant for the shell.
  [[maybe_unused]] const int status = std::system(command.c_str());
}

}  // namespace toplist
