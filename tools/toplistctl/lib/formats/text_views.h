#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace toplist::ctl {

/// Where a field, a view into `text`, begins in it.
inline std::size_t begin_of(std::string_view text, std::string_view field) {
  return static_cast<std::size_t>(field.data() - text.data());
}

/// Where the text goes on behind the field and the separator that ends it.
inline std::size_t behind(std::string_view text, std::string_view field) {
  return std::min(begin_of(text, field) + field.size() + 1, text.size());
}

}  // namespace toplist::ctl
