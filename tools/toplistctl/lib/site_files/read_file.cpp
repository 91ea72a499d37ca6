#include "toplistctl/lib/site_files/read_file.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "util/uninterrupted.h"
#include "util/unique_fd.h"

namespace toplist::ctl {
namespace {

constexpr const char* kCannotRead = "cannot read";

Error not_readable(const std::string& path, std::string detail) {
  return {.tried = kCannotRead, .path = path, .code = 0, .detail = std::move(detail)};
}

struct OpenFile {
  UniqueFd fd;
  std::size_t size;
};

Expected<OpenFile> open_regular(const std::string& path) {
  // Without waiting for a FIFO's writer.
  UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!fd) return system_error("cannot open", path, errno);
  struct stat status {};
  if (::fstat(fd.get(), &status) != 0) return system_error(kCannotRead, path, errno);
  if (!S_ISREG(status.st_mode)) {
    return tl::unexpected(not_readable(path, "It is not a regular file"));
  }
  return OpenFile{std::move(fd), static_cast<std::size_t>(status.st_size)};
}

/// Reads from the file's offset to its end, `expected` bytes if the file does not grow meanwhile.
Expected<std::string> read_rest(const UniqueFd& fd, const std::string& path, std::size_t expected) {
  std::string text;
  for (std::size_t size = 0;;) {
    // One byte more than the file has, so that its end is found without growing the buffer again.
    if (size == text.size()) text.resize(std::max(size + size / 2, expected) + 1);
    if (text.size() > kMostFileBytes) {
      return tl::unexpected(not_readable(path, "It is larger than 1 GiB"));
    }
    const ssize_t count =
        uninterrupted([&] { return ::read(fd.get(), text.data() + size, text.size() - size); });
    if (count < 0) return system_error(kCannotRead, path, errno);
    size += static_cast<std::size_t>(count);
    if (count > 0) continue;
    text.resize(size);
    return text;
  }
}

}  // namespace

Expected<std::string> read_file(const std::string& path) {
  return open_regular(path).and_then(
      [&path](const OpenFile& file) { return read_rest(file.fd, path, file.size); });
}

Expected<std::string> read_input(const std::string& path) {
  const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (!fd) return system_error("cannot open", path, errno);
  return read_rest(fd, path, 0);
}

Expected<FileEnd> read_file_end(const std::string& path, std::size_t most) {
  const auto file = open_regular(path);
  if (!file) return tl::unexpected(file.error());
  const bool is_cut = file->size > most;
  if (is_cut) ::lseek(file->fd.get(), -static_cast<off_t>(most), SEEK_END);
  return read_rest(file->fd, path, std::min(file->size, most)).map([&](std::string text) {
    return FileEnd{std::move(text), is_cut};
  });
}

Expected<std::optional<std::string>> read_file_if_there(const std::string& path) {
  Expected<std::string> text = read_file(path);
  if (!text && text.error().code == ENOENT) return std::nullopt;
  return text.map([](std::string& bytes) { return std::optional(std::move(bytes)); });
}

}  // namespace toplist::ctl
