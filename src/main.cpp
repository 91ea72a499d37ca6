#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <new>
#include <stdexcept>

#include "run/run_driver.h"
#include "run/sys_log.h"

namespace {

constexpr const char* kOutOfMemory = "not enough memory";

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
/// failures are in the system log. Only a malformed template line ends the process abnormally, by
/// the std::out_of_range that is let through here on purpose.
int main(int argc, char** argv) {
  if (argc != 2 || std::strcmp(argv[1], "run") != 0) return 0;
  open_standard_descriptors();
  survive_broken_pipes();
  try {
    toplist::run_driver();
  } catch (const std::bad_alloc&) {
    toplist::log_content_error(kOutOfMemory, toplist::Severity::run_ends);
  } catch (const std::length_error&) {  // a file larger than any memory
    toplist::log_content_error(kOutOfMemory, toplist::Severity::run_ends);
  }
  return 0;
}
