#include "toplistctl/lib/site_files/site_lock.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <utility>

#include "toplistctl/lib/output/console.h"
#include "util/fields.h"
#include "util/file.h"
#include "util/uninterrupted.h"

namespace toplist::ctl {
namespace {

constexpr mode_t kLockMode = 0600;

/// Opens the lock file, as flock(1) does for reading; creates it if there is none.
Expected<UniqueFd> open_lock() {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  UniqueFd fd(::open(kRunLockPath, kFlags));
  if (fd) return fd;
  if (errno == ENOENT) {
    // Another command may create it at the same time.
    fd = UniqueFd(::open(kRunLockPath, kFlags | O_CREAT, kLockMode));
    if (fd && ::fchmod(fd.get(), kLockMode) == 0) return fd;
  }
  return system_error("cannot open", kRunLockPath, errno);
}

/// What a terminal or the system sends to end a process.
constexpr int kRequestsToEnd[] = {SIGINT, SIGTERM, SIGHUP};

int take(const UniqueFd& fd, int how) {
  return uninterrupted([&] { return ::flock(fd.get(), how); });
}

/// The process that holds a lock on the file, from a line of "/proc/locks" such as
/// "1: FLOCK ADVISORY WRITE 4711 fe:00:1234 0 EOF": the device's numbers in hexadecimal, the inode.
std::optional<int> holding_process(const struct stat& file) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> locks(std::fopen("/proc/locks", "re"),
                                                              std::fclose);
  std::array<char, 256> line{};
  while (locks && std::fgets(line.data(), line.size(), locks.get()) != nullptr) {
    int process = 0;
    unsigned major = 0, minor = 0;
    unsigned long inode = 0;
    if (std::sscanf(line.data(), "%*s FLOCK %*s %*s %d %x:%x:%lu", &process, &major, &minor,
                    &inode) == 4 &&
        ::makedev(major, minor) == file.st_dev && inode == file.st_ino) {
      return process;
    }
  }
  return std::nullopt;
}

/// Field 22 of "/proc/PID/stat" is the start in clock ticks since the system's own. The second one,
/// a name in parentheses, may hold blanks.
std::optional<std::int64_t> seconds_since_start(int process) {
  FileBuffer file;
  if (!file.read(fmt::format("/proc/{}/stat", process))) return std::nullopt;
  std::string_view fields = file.text();
  fields.remove_prefix(std::min(fields.rfind(')') + 1, fields.size()));
  FieldReader words(fields, ' ');
  words.skip(20);
  std::string_view ticks;
  timespec now{};
  if (!words.next(ticks) || ::clock_gettime(CLOCK_BOOTTIME, &now) != 0) return std::nullopt;
  return now.tv_sec - std::stoll(std::string(ticks)) / ::sysconf(_SC_CLK_TCK);
}

}  // namespace

SiteLock::SiteLock(UniqueFd fd) : fd_(std::move(fd)) {
  sigset_t requests;
  ::sigemptyset(&requests);
  for (const int signal : kRequestsToEnd) ::sigaddset(&requests, signal);
  ::sigprocmask(SIG_BLOCK, &requests, &signals_before_);
}

SiteLock::~SiteLock() {
  if (fd_) ::sigprocmask(SIG_SETMASK, &signals_before_, nullptr);
}

bool SiteLock::is_asked_to_end() {
  sigset_t pending;
  ::sigpending(&pending);
  return std::any_of(std::begin(kRequestsToEnd), std::end(kRequestsToEnd),
                     [&pending](int signal) { return ::sigismember(&pending, signal) == 1; });
}

Expected<SiteLock> lock_site() {
  Expected<UniqueFd> fd = open_lock();
  if (!fd) return tl::unexpected(fd.error());
  int error = take(*fd, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
  if (error == EWOULDBLOCK) {
    warn(fmt::format("a run or another command holds {}; waiting for it", kRunLockPath));
    error = take(*fd, LOCK_EX) == 0 ? 0 : errno;
  }
  if (error != 0) return system_error("cannot lock", kRunLockPath, error);
  return SiteLock(std::move(*fd));
}

std::optional<LockHolder> lock_holder() {
  struct stat file {};
  if (::stat(kRunLockPath, &file) != 0) return std::nullopt;
  const std::optional<int> process = holding_process(file);
  if (!process) return std::nullopt;
  return LockHolder{seconds_since_start(*process)};
}

}  // namespace toplist::ctl
