#include "toplistctl/lib/output/console.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>

#include "util/file.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

constexpr char kLeadByte = '\xC2';  ///< before bytes 0x80 to 0x9F: a control character

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

int print(std::string_view text, int status) {
  const bool written = ::isatty(STDOUT_FILENO) != 0
                           ? write_fully(STDOUT_FILENO, printable_lines(text))
                           : write_fully(STDOUT_FILENO, text);
  if (written || errno == EPIPE) return status;
  return fail("cannot write standard output", errno);
}

int fail(std::string_view what) {
  warn(what);
  return kExitTrouble;
}

int fail(std::string_view what, int error) {
  return fail(fmt::format("{}: {}", what, std::generic_category().message(error)));
}

void warn(std::string_view what) {
  std::fprintf(stderr, "toplistctl: %s\n", printable(what).c_str());
}

void survive_failed_writes() {
  for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, [](int) {});
}

std::string printable(std::string_view text) { return masked(text, ""); }

std::string printable_lines(std::string_view text) { return masked(text, "\n\t"); }

}  // namespace toplist::ctl
