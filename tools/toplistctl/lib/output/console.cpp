#include "toplistctl/lib/output/console.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string>
#include <system_error>

#include "toplistctl/lib/output/printable.h"
#include "util/file.h"

namespace toplist::ctl {

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
  return fail(std::string(what) + ": " + std::generic_category().message(error));
}

void warn(std::string_view what) {
  std::fprintf(stderr, "toplistctl: %s\n", printable(what).c_str());
}

void survive_broken_pipes() {
  std::signal(SIGPIPE, [](int) {});
}

}  // namespace toplist::ctl
