#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "toplistctl/lib/diagnostics/error.h"

/// Checked reads for everything that changes a site or reports on it: a file that cannot be read is
/// an error, never an empty file. (A run ignores read errors by contract.)
namespace toplist::ctl {

/// The largest file that is read whole: 1 GiB. A site of a million trades stays below it.
inline constexpr std::size_t kMostFileBytes = std::size_t{1} << 30;

/// The last bytes of a file.
struct FileEnd {
  std::string text;
  bool is_cut;  ///< whether other bytes come before
};

/// The last `most` bytes of a regular file, or all of a smaller one. Errors as of read_file().
Expected<FileEnd> read_file_end(const std::string& path, std::size_t most);

/// The whole of a regular file. An error when it cannot be opened, when a read fails, when it is
/// larger than kMostFileBytes, or when it is no regular file: a FIFO would block, a device never
/// end.
Expected<std::string> read_file(const std::string& path);

/// The same of a file of any kind, such as a pipe, that ends by itself.
Expected<std::string> read_input(const std::string& path);

/// The whole of a regular file; nothing when there is no such file.
Expected<std::optional<std::string>> read_file_if_there(const std::string& path);

}  // namespace toplist::ctl
