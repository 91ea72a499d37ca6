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

/// Reads a file whose size is expected to be `size`.
Expected<std::string> read_to_the_end(const UniqueFd& fd, const std::string& path,
                                      std::size_t size) {
  std::string text;
  for (std::size_t end = 0;;) {
    // One byte more than the file holds, so that its end shows without growing once more.
    if (end == text.size()) text.resize(std::max(end + end / 2, size + 1) + 1);
    if (text.size() > kMostFileBytes) {
      return tl::unexpected(not_readable(path, "It is larger than 1 GiB"));
    }
    const ssize_t count =
        uninterrupted([&] { return ::read(fd.get(), text.data() + end, text.size() - end); });
    if (count < 0) return system_error(kCannotRead, path, errno);
    end += static_cast<std::size_t>(count);
    if (count > 0) continue;
    text.resize(end);
    return text;
  }
}

}  // namespace

Expected<std::string> read_file(const std::string& path) {
  // Without waiting for a FIFO's writer.
  const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!fd) return system_error("cannot open", path, errno);
  struct stat status {};
  if (::fstat(fd.get(), &status) != 0) return system_error(kCannotRead, path, errno);
  if (!S_ISREG(status.st_mode)) {
    return tl::unexpected(not_readable(path, "It is not a regular file"));
  }
  return read_to_the_end(fd, path, static_cast<std::size_t>(status.st_size));
}

Expected<std::string> read_input(const std::string& path) {
  const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (!fd) return system_error("cannot open", path, errno);
  return read_to_the_end(fd, path, 0);
}

Expected<std::optional<std::string>> read_file_if_there(const std::string& path) {
  Expected<std::string> text = read_file(path);
  if (!text && text.error().code == ENOENT) return std::nullopt;
  return text.map([](std::string& bytes) { return std::optional(std::move(bytes)); });
}

}  // namespace toplist::ctl
