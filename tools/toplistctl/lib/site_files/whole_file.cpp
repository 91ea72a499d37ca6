#include "toplistctl/lib/site_files/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "util/file.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kNewFileMode = 0666;

/// Up to so many files are written to the disk one by one. Beyond that their whole file system is,
/// which for thousands of small files takes a hundredth of the time.
constexpr std::size_t kFewFiles = 8;

/// What a terminal or the system sends to end a process.
constexpr int kRequestsToEnd[] = {SIGINT, SIGTERM, SIGHUP};

bool is_asked_to_end() {
  sigset_t pending;
  ::sigpending(&pending);
  return std::any_of(std::begin(kRequestsToEnd), std::end(kRequestsToEnd),
                     [&pending](int signal) { return ::sigismember(&pending, signal) == 1; });
}

/// The mode of new files. Only to be read by being set: this program has one thread.
mode_t umask_now() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return mask;
}

/// Gives the file the mode and, where possible, the owner of the one that it is to replace.
bool take_attributes(int fd, const struct stat& original) {
  // The owner first: to change it may take the set-id bits off the mode.
  if (::fchown(fd, original.st_uid, original.st_gid) != 0) {
    // Only root may give files away; to keep at least the group is often possible.
    (void)!::fchown(fd, static_cast<uid_t>(-1), original.st_gid);
  }
  return ::fchmod(fd, original.st_mode & 07777) == 0;
}

/// The attributes that a file at `path` is to have, then the bytes. False with errno.
bool fill(int fd, const std::string& path, std::string_view bytes) {
  struct stat original {};
  if (::stat(path.c_str(), &original) == 0) {
    errno = EINVAL;  // a device or a folder: nothing to be replaced by a file
    if (!S_ISREG(original.st_mode) || !take_attributes(fd, original)) return false;
  } else if (errno != ENOENT || ::fchmod(fd, kNewFileMode & ~umask_now()) != 0) {
    return false;
  }
  return write_fully(fd, bytes);
}

/// The path with its links followed, as far as it is there. A link to nothing is an error.
std::string behind_links(const std::string& path, std::error_code& error) {
  if (fs::symlink_status(path, error).type() != fs::file_type::not_found) {
    return fs::canonical(path, error);
  }
  error.clear();
  const fs::path folder = fs::path(path).parent_path();
  return fs::canonical(folder.empty() ? "." : folder, error) / fs::path(path).filename();
}

std::string folder_of(const std::string& path) { return fs::path(path).parent_path(); }

/// Has a file or folder written to the disk, by fsync() or syncfs(). False with errno.
bool sync_path(const std::string& path, int (*sync)(int)) {
  const UniqueFd fd = open_for_reading(path);
  return fd && sync(fd.get()) == 0;
}

}  // namespace

PreparedFiles::PreparedFiles() {
  sigset_t requests;
  ::sigemptyset(&requests);
  for (const int signal : kRequestsToEnd) ::sigaddset(&requests, signal);
  ::sigprocmask(SIG_BLOCK, &requests, &signals_before_);
}

PreparedFiles::~PreparedFiles() {
  for (; replaced_ < files_.size(); ++replaced_) ::unlink(files_[replaced_].temporary.c_str());
  ::sigprocmask(SIG_SETMASK, &signals_before_, nullptr);
}

int PreparedFiles::prepare(const std::string& path, std::string_view bytes) {
  const int error = is_asked_to_end() ? EINTR : prepare_file(path, bytes);
  if (error != 0) failed_ = path;
  return error;
}

int PreparedFiles::prepare_file(const std::string& path, std::string_view bytes) {
  std::error_code error;
  const std::string real = behind_links(path, error);
  if (error) return error.value();
  std::string temporary = real + ".XXXXXX";
  const UniqueFd fd(::mkostemp(temporary.data(), O_CLOEXEC));
  if (!fd) return errno;
  files_.push_back({real, temporary});
  return fill(fd.get(), real, bytes) ? 0 : errno;
}

int PreparedFiles::replace() {
  const bool few = files_.size() <= kFewFiles;
  std::set<std::string> folders;
  for (const File& file : files_) folders.insert(folder_of(file.path));

  if (few) {
    for (const File& file : files_) {
      if (!sync_path(file.temporary, ::fsync)) return fail_at(file.path);
    }
  } else {
    for (const std::string& folder : folders) {
      if (!sync_path(folder, ::syncfs)) return fail_at(folder);
    }
  }
  for (; replaced_ < files_.size(); ++replaced_) {
    const File& file = files_[replaced_];
    if (std::rename(file.temporary.c_str(), file.path.c_str()) != 0) return fail_at(file.path);
    // One by one, so that the order of a few files outlives a power cut.
    if (few) sync_path(folder_of(file.path), ::fsync);
  }
  for (const std::string& folder : folders) sync_path(folder, ::fsync);
  return 0;
}

int PreparedFiles::fail_at(const std::string& path) {
  failed_ = path;
  return errno;
}

int replace_file(const std::string& path, std::string_view bytes) {
  PreparedFiles files;
  const int error = files.prepare(path, bytes);
  return error != 0 ? error : files.replace();
}

}  // namespace toplist::ctl
