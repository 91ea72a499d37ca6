#include "toplistctl/lib/site_files/run_lock.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

namespace toplist::ctl {
namespace {

/// How "/proc/locks" names a file: device numbers in two digits, then the inode.
std::string name_in_locks(const struct stat& file) {
  std::ostringstream name;
  name.fill('0');
  name << std::hex;
  name.width(2);
  name << ::major(file.st_dev) << ':';
  name.width(2);
  name << ::minor(file.st_dev) << ':' << std::dec << file.st_ino;
  return name.str();
}

/// The process that holds a lock on the file: fields 5 and 6 of a line of "/proc/locks" are the
/// process and the file.
std::optional<std::string> holding_process(const struct stat& file) {
  const std::string wanted = name_in_locks(file);
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    std::istringstream words(line);
    std::string number, kind, mode, access, process, name;
    words >> number >> kind >> mode >> access >> process >> name;
    if (kind == "FLOCK" && name == wanted) return process;
  }
  return std::nullopt;
}

/// Field 22 of "/proc/PID/stat" is the start in clock ticks since the system's own; the second one,
/// a name in parentheses, may hold blanks.
std::optional<std::int64_t> seconds_since_start(const std::string& process) {
  std::ifstream stat_file("/proc/" + process + "/stat");
  std::string line;
  std::getline(stat_file, line);
  const std::size_t name_end = line.rfind(')');
  if (name_end == std::string::npos) return std::nullopt;
  std::istringstream words(line.substr(name_end + 1));
  std::string word;
  for (int field = 3; field < 22; ++field) words >> word;
  std::int64_t ticks = 0;
  double uptime = 0;
  if (!(words >> ticks) || !(std::ifstream("/proc/uptime") >> uptime)) return std::nullopt;
  return static_cast<std::int64_t>(uptime) - ticks / ::sysconf(_SC_CLK_TCK);
}

}  // namespace

std::optional<LockHolder> lock_holder() {
  struct stat file {};
  if (::stat(kRunLockPath, &file) != 0) return std::nullopt;
  // Asked of the system's list: trying the lock would keep a run that begins just now from it.
  const std::optional<std::string> process = holding_process(file);
  if (!process) return std::nullopt;
  return LockHolder{seconds_since_start(*process)};
}

}  // namespace toplist::ctl
