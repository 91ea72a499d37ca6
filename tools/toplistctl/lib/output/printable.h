#pragma once

#include <string>
#include <string_view>

namespace toplist::ctl {

/// The text with "?" in place of what a terminal would act upon: control characters, also those
/// that take two bytes of UTF-8 (U+0080 to U+009F).
std::string printable(std::string_view text);

/// The same for text of many lines: line feeds and tabs stay.
std::string printable_lines(std::string_view text);

}  // namespace toplist::ctl
