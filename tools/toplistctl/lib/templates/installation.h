#pragma once

#include <optional>
#include <string>

namespace toplist::ctl {

/// What the names of sources that lie beside their templates end in.
inline constexpr const char* kSourceSuffix = ".src";

/// The file name, in "d/tl/", of the template that the source at this path is for: its own without
/// the last suffix. Nothing when it has no suffix, or when a file there that is no template has
/// the name.
std::optional<std::string> template_name_of(const std::string& source);

/// Writes a template into the site in the working directory, and its check value into every record
/// of "d/tl/tl" that has it. Prints the check value and the name. Returns the exit status; what
/// could not be done is told on standard error.
int install_template(const std::string& name, const std::string& text);

}  // namespace toplist::ctl
