#include "util/file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "util/uninterrupted.h"

namespace toplist {
namespace {

constexpr std::size_t kSmallFileBytes = 64UL * 1024;

}  // namespace

UniqueFd open_for_reading(const std::string& path) {
  return UniqueFd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

std::size_t read_fully(int fd, char* bytes, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = uninterrupted([&] { return ::read(fd, bytes + done, size - done); });
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

bool write_fully(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = uninterrupted([&] { return ::write(fd, bytes.data(), bytes.size()); });
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

std::size_t regular_file_size(int fd) {
  struct stat status {};
  if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return 0;
  return static_cast<std::size_t>(status.st_size);
}

bool write_file(const std::string& path, std::string_view bytes) {
  const UniqueFd fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  if (!fd) return false;
  write_fully(fd.get(), bytes);
  return true;
}

bool list_directory(const std::string& path, std::vector<std::string>& names) {
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir(path.c_str()), ::closedir);
  if (!directory) return false;
  while (const dirent* entry = ::readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  return true;
}

bool FileBuffer::read(const std::string& path) {
  size_ = 0;
  const UniqueFd fd = open_for_reading(path);
  if (!fd) return false;
  if (!read_small_file(fd.get())) read_to_the_end(fd.get());
  return true;
}

bool FileBuffer::read_small_file(int fd) {
  if (room_ == 0) grow(kSmallFileBytes);
  // Unlike read(), this fails for files that may deliver their bytes in pieces, such as pipes.
  const ssize_t count = ::pread(fd, bytes_.get(), kSmallFileBytes, 0);
  if (count < 0 || static_cast<std::size_t>(count) == kSmallFileBytes) return false;
  size_ = static_cast<std::size_t>(count);
  return true;
}

void FileBuffer::read_to_the_end(int fd) {
  // One byte more than the file has, so that its end is found without growing the buffer again.
  grow(regular_file_size(fd) + 1);
  for (;;) {
    size_ += read_fully(fd, bytes_.get() + size_, room_ - size_);
    if (size_ < room_) return;
    grow(room_ + room_ / 2);
  }
}

void FileBuffer::grow(std::size_t room) {
  if (room <= room_) return;
  auto larger = std::make_unique_for_overwrite<char[]>(room);
  std::copy_n(bytes_.get(), size_, larger.get());
  bytes_ = std::move(larger);
  room_ = room;
}

}  // namespace toplist
