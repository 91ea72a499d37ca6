#include "toplistctl/lib/site_files/site_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <string>

#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/run_lock.h"
#include "util/uninterrupted.h"

namespace toplist::ctl {
namespace {

bool take(const UniqueFd& fd, int how) {
  return uninterrupted([&] { return ::flock(fd.get(), how); }) == 0;
}

}  // namespace

UniqueFd lock_site(bool may_wait) {
  // As flock(1) opens it: to be locked, a file of another user's need not be writable.
  UniqueFd fd(::open(kRunLockPath, O_RDONLY | O_CREAT | O_CLOEXEC | O_NOCTTY, 0666));
  if (!fd) {
    fail(std::string("cannot open ") + kRunLockPath, errno);
    return fd;
  }
  if (take(fd, LOCK_EX | LOCK_NB)) return fd;
  if (errno == EWOULDBLOCK) {
    const std::string held = std::string(kRunLockPath) + " is held by a run or another import";
    if (!may_wait) {
      fail(held);
      return UniqueFd();
    }
    warn(held + ": waiting for it");
    if (take(fd, LOCK_EX)) return fd;
  }
  fail(std::string("cannot lock ") + kRunLockPath, errno);
  return UniqueFd();
}

}  // namespace toplist::ctl
