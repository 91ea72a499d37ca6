#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace toplist {

/// Replaces every occurrence of `from`, which must not be empty. Each search starts after the last
/// replacement, so text from `to` is not replaced again.
void replace_all(std::string& text, std::string_view from, std::string_view to);

/// Appends the number as plain signed decimal text.
void append_number(std::string& text, std::int32_t number);

/// Lower-cases each byte as the C library's tolower does in the "C" locale: A to Z only.
void lower_case(std::string& text);

/// Whether the text contains a byte below 32, or 127.
bool has_control_character(std::string_view text);

/// The text without the blanks at its ends: spaces and tabs.
std::string_view trimmed(std::string_view text);

/// The text without the control characters at its ends.
std::string_view trim_control_characters(std::string_view text);

constexpr bool contains(std::string_view text, std::string_view part) noexcept {
  return text.find(part) != std::string_view::npos;
}

}  // namespace toplist
