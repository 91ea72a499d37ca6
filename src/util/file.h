#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "util/unique_fd.h"

namespace toplist {

/// Opens `path` for reading, close-on-exec. A directory opens too and then reads as an empty file.
UniqueFd open_for_reading(const std::string& path);

/// Reads until `size` bytes have come, the file ends or a read fails; returns how many came.
std::size_t read_fully(int fd, char* bytes, std::size_t size);

/// Writes all of `bytes`; false after a failure. A run ignores that, because it has no way to
/// report it.
bool write_fully(int fd, std::string_view bytes);

/// Size in bytes of the open regular file; 0 for anything else, because a directory may report an
/// absurd size.
std::size_t regular_file_size(int fd);

/// Creates or truncates `path` (mode 0666 less the umask) and writes `bytes` in place
/// (contract: written-in-place). False when it cannot be opened; write errors are not reported.
bool write_file(const std::string& path, std::string_view bytes);

/// Appends the names in a directory, except "." and "..", to `names`; false if it cannot be opened.
bool list_directory(const std::string& path, std::vector<std::string>& names);

/// The bytes of one file at a time, read whole into a buffer that the next read() reuses.
class FileBuffer {
 public:
  FileBuffer() = default;
  FileBuffer(const FileBuffer&) = delete;
  FileBuffer& operator=(const FileBuffer&) = delete;

  /// Replaces the text by the file's contents. A read failure counts as the end of the file.
  /// False, with an empty text, when the file cannot be opened.
  bool read(const std::string& path);

  /// Valid until the next read() and while this object lives.
  [[nodiscard]] std::string_view text() const noexcept { return {bytes_.get(), size_}; }

 private:
  /// Reads a file with one call; false if the file needs more than one.
  bool read_small_file(int fd);
  void read_to_the_end(int fd);
  void grow(std::size_t room);

  std::unique_ptr<char[]> bytes_;  ///< Grows only: reading many small files costs one allocation.
  std::size_t room_ = 0;
  std::size_t size_ = 0;
};

}  // namespace toplist
