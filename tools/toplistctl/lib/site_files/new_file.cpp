#include "toplistctl/lib/site_files/new_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>

#include "toplistctl/lib/site_files/read_file.h"
#include "util/file.h"
#include "util/uninterrupted.h"

namespace toplist::ctl {
namespace {

constexpr mode_t kNewFileMode = 0666;

/// Up to so many files are written to the disk one by one.
constexpr std::size_t kFewFiles = 8;

tl::unexpected<Error> cannot_write(const std::string& path, int code) {
  return system_error("cannot write", path, code);
}

/// The mode of new files. It can only be read by being set: this program has one thread.
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

std::string folder_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string name_of(const std::string& path) { return path.substr(path.rfind('/') + 1); }

Expected<std::string> without_links(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                         std::free);
  if (!real) return cannot_write(path, errno);
  return std::string(real.get());
}

/// Writes a new file with the mode of `original`, nullptr for a new file's.
Expected<void> create(const std::string& path, std::string_view bytes,
                      const struct stat* original) {
  if (const auto removed = remove_file(path); !removed) return removed;
  const UniqueFd fd(uninterrupted(
      [&] { return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600); }));
  if (!fd) return cannot_write(path, errno);
  const bool has_mode = original != nullptr ? take_attributes(fd.get(), *original)
                                            : ::fchmod(fd.get(), kNewFileMode & ~umask_now()) == 0;
  if (!has_mode || !write_fully(fd.get(), bytes)) return cannot_write(path, errno);
  return {};
}

Expected<void> sync_path(const std::string& path, int (*sync)(int)) {
  const UniqueFd fd = open_for_reading(path);
  if (!fd || uninterrupted([&] { return sync(fd.get()); }) != 0) return cannot_write(path, errno);
  return {};
}

}  // namespace

Expected<std::string> RealPaths::of(const std::string& path) {
  const std::string folder = folder_of(path);
  auto known = folders_.find(folder);
  if (known == folders_.end()) {
    auto real = without_links(folder);
    if (!real) return real;
    known = folders_.emplace(folder, *real).first;
  }
  const std::string whole = known->second + "/" + name_of(path);
  struct stat status {};
  const bool is_link = ::lstat(whole.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
  if (!is_link) return whole;
  auto target = without_links(whole);
  if (target) folders_.emplace(folder_of(*target), folder_of(*target));
  return target;
}

std::vector<std::string> RealPaths::folders() const {
  std::set<std::string> real;
  for (const auto& [folder, path] : folders_) real.insert(path);
  return {real.begin(), real.end()};
}

Expected<void> write_new_file(const std::string& path, std::string_view bytes) {
  struct stat original {};
  const bool is_there = ::stat(path.c_str(), &original) == 0;
  if (!is_there && errno != ENOENT) return cannot_write(path, errno);
  if (is_there && !S_ISREG(original.st_mode)) {
    return tl::unexpected(Error{"cannot write", path, 0, "It is not a regular file."});
  }
  return create(path + std::string(kNewSuffix), bytes, is_there ? &original : nullptr);
}

Expected<void> create_file(const std::string& path, std::string_view bytes) {
  return create(path, bytes, nullptr);
}

Expected<void> link_or_copy(const std::string& file, const std::string& copy) {
  if (::link(file.c_str(), copy.c_str()) == 0) return {};
  struct stat original {};
  if (::stat(file.c_str(), &original) != 0) return system_error("cannot read", file, errno);
  return read_file(file)
      .and_then([&](const std::string& bytes) { return create(copy, bytes, &original); })
      .and_then([&] { return sync_path(copy, ::fsync); });
}

Expected<void> rename_file(const std::string& from, const std::string& to) {
  if (std::rename(from.c_str(), to.c_str()) != 0) return cannot_write(to, errno);
  return {};
}

Expected<void> remove_file(const std::string& path) {
  if (::unlink(path.c_str()) == 0 || errno == ENOENT) return {};
  return system_error("cannot remove", path, errno);
}

Expected<void> sync_files(const std::vector<std::string>& paths) {
  std::set<dev_t> synced;
  for (const std::string& path : paths) {
    struct stat status {};
    if (paths.size() > kFewFiles && ::stat(path.c_str(), &status) == 0 &&
        !synced.insert(status.st_dev).second) {
      continue;
    }
    const auto done = sync_path(path, paths.size() > kFewFiles ? ::syncfs : ::fsync);
    if (!done) return done;
  }
  return {};
}

Expected<void> replace_file(const std::string& path, std::string_view bytes) {
  RealPaths paths;
  const auto real = paths.of(path);
  if (!real) return tl::unexpected(real.error());
  const std::string temporary = *real + std::string(kNewSuffix);
  auto done =
      write_new_file(*real, bytes).and_then([&] { return sync_files({temporary}); }).and_then([&] {
        return rename_file(temporary, *real);
      });
  if (!done) {
    (void)remove_file(temporary);
    return done;
  }
  return sync_files(paths.folders());
}

}  // namespace toplist::ctl
