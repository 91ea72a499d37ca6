#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

#include "run/run_driver.h"

namespace {

/// Fills the standard descriptors that the caller left closed, so that no data file or socket gets
/// a number which the C library writes messages to.
void open_standard_descriptors() {
  int fd = 0;
  while (fd >= 0 && fd <= STDERR_FILENO) fd = ::open("/dev/null", O_RDWR);
  if (fd > STDERR_FILENO) ::close(fd);
}

/// Keeps a reader that went away from standard output from ending the run. A handler, unlike an
/// ignored signal, is not inherited by the commands that the harvest runs.
void survive_broken_pipes() {
  std::signal(SIGPIPE, [](int) {});
}

}  // namespace

/// The one argument is "run"; anything else does nothing. The status is 0, whatever failed:
/// failures are in the system log.
int main(int argc, char** argv) {
  if (argc != 2 || std::strcmp(argv[1], "run") != 0) return 0;
  open_standard_descriptors();
  survive_broken_pipes();
  toplist::run_driver();
  return 0;
}
