#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "run/run_driver.h"
#include "run/sys_log.h"
#include "util/file.h"
#include "util/number.h"

namespace {

constexpr const char* kOutOfMemory = "not enough memory";

/// Fills the standard descriptors that the caller left closed, so that no data file or socket gets
/// a number which the C library writes messages to.
void open_standard_descriptors() {
  int fd = 0;
  while (fd >= 0 && fd <= STDERR_FILENO) fd = ::open("/dev/null", O_RDWR);
  if (fd > STDERR_FILENO) ::close(fd);
}

/// Keeps the descriptors that the caller left open from the commands that the harvest runs. One may
/// hold the scheduler's lock, which a slow download would keep locked after the run was killed.
void keep_descriptors_from_commands() {
  std::vector<std::string> open;
  toplist::list_directory("/proc/self/fd", open);
  for (const std::string& name : open) {
    const int fd = toplist::parse_int32(name);
    if (fd > STDERR_FILENO) ::fcntl(fd, F_SETFD, FD_CLOEXEC);
  }
}

/// Keeps a reader that went away from standard output, and a file that reaches the scheduler's
/// limit of its size, from ending the run: a write fails then, like any other. Handlers, unlike
/// ignored signals, are not inherited by the commands that the harvest runs.
void survive_failed_writes() {
  for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, [](int) {});
}

}  // namespace

/// The one argument is "run"; anything else does nothing. The status is 0, whatever failed:
/// failures are in the system log. Only a malformed template line ends the process abnormally, by
/// the StrayMark that is let through here (contract: status-zero) (contract: abnormal-stop).
int main(int argc, char** argv) {
  if (argc != 2 || std::strcmp(argv[1], "run") != 0) return 0;
  open_standard_descriptors();
  keep_descriptors_from_commands();
  survive_failed_writes();
  try {
    toplist::run_driver();
  } catch (const std::bad_alloc&) {
    toplist::log_failure(toplist::content_error(kOutOfMemory));
  } catch (const std::length_error&) {  // a file larger than any memory
    toplist::log_failure(toplist::content_error(kOutOfMemory));
  }
  return 0;
}
