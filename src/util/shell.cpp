#include "util/shell.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>

#include "util/number.h"
#include "util/text.h"

namespace toplist {
namespace {

/// The RLIMIT_NOFILE of commands while a RaisedDescriptorLimit lives. It is global because the
/// limit belongs to the process.
std::optional<rlim_t> limit_of_commands;

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

RaisedDescriptorLimit::RaisedDescriptorLimit() {
  rlimit limits{};
  if (::getrlimit(RLIMIT_NOFILE, &limits) != 0 || limits.rlim_cur == limits.rlim_max) return;
  limit_of_commands = std::exchange(limits.rlim_cur, limits.rlim_max);
  ::setrlimit(RLIMIT_NOFILE, &limits);
}

RaisedDescriptorLimit::~RaisedDescriptorLimit() {
  rlimit limits{};
  if (!limit_of_commands || ::getrlimit(RLIMIT_NOFILE, &limits) != 0) return;
  limits.rlim_cur = *limit_of_commands;
  ::setrlimit(RLIMIT_NOFILE, &limits);
  limit_of_commands.reset();
}

void run_shell_command(const std::string& command) {
  // The commands are the operator's own (downloaders, the image tool) and are meant for the shell.
  std::string line = command;
  if (limit_of_commands) {
    // The shell itself sets the limit, because std::system() starts it with the limits of the
    // process. A second shell gets the command byte for byte.
    line = "ulimit -S -n " + std::to_string(*limit_of_commands) + "; exec /bin/sh -c " +
           shell_word(command) + " sh";
  }
  [[maybe_unused]] const int status = std::system(line.c_str());
}

}  // namespace toplist
