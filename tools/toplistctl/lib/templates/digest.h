#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace toplist::ctl {

/// The check value of a template's text: its SHA-1 in 40 hexadecimal digits.
std::string check_value_of(std::string_view text);

/// The text of "d/tl/tl" with the check value in every record of this template. All other bytes
/// stay. Nothing when no record of it has a field for the check value.
std::optional<std::string> with_check_value(std::string_view text, std::string_view template_name,
                                            std::string_view check_value);

}  // namespace toplist::ctl
