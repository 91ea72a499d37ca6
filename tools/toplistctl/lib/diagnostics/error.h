#pragma once

#include <string>
#include <string_view>
#include <tl/expected.hpp>

namespace toplist::ctl {

/// Why something could not be done: what was tried, on which path, and the reason.
struct Error {
  std::string tried;   ///< such as "cannot open"; the whole text when there is no path
  std::string path;    ///< of the file or folder; empty when it is about none
  int code = 0;        ///< the system's reason, an errno; 0 when `detail` says why
  std::string detail;  ///< a reason or advice in words, may be empty

  /// One line: "cannot open d/t/index: Permission denied. DETAIL".
  [[nodiscard]] std::string text() const;
};

/// A value, or why there is none.
template <typename T>
using Expected = tl::expected<T, Error>;

/// A failure that a system call reported in errno. Call it right after the call, with errno: the
/// function that made the system call is the only one that reads it.
tl::unexpected<Error> system_error(std::string_view tried, std::string_view path, int code);

/// A failure in words.
tl::unexpected<Error> failure(std::string text);

}  // namespace toplist::ctl
