#include "toplistctl/lib/diagnostics/error.h"

#include <fmt/core.h>

#include <system_error>
#include <utility>

namespace toplist::ctl {

std::string Error::text() const {
  std::string text = path.empty() ? tried : fmt::format("{} {}", tried, path);
  if (code != 0) text += fmt::format(": {}", std::generic_category().message(code));
  if (!detail.empty()) text += fmt::format(". {}", detail);
  return text;
}

tl::unexpected<Error> system_error(std::string_view tried, std::string_view path, int code) {
  return tl::unexpected(Error{std::string(tried), std::string(path), code, {}});
}

tl::unexpected<Error> failure(std::string text) {
  return tl::unexpected(Error{std::move(text), {}, 0, {}});
}

}  // namespace toplist::ctl
