#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toplistctl/lib/diagnostics/error.h"

/// Templates and their check values in "d/tl/tl", without which a toplist of mode 1 is not built.
namespace toplist::ctl {

/// How the name of a source ends that lies beside its template.
inline constexpr const char* kSourceSuffix = ".src";

/// The check value of a template's text: its SHA-1 in 40 hexadecimal digits.
std::string check_value_of(std::string_view text);

/// The text of "d/tl/tl" with the check value in every record of this template. All other bytes
/// stay. Nothing when no record of it has a field for the check value.
std::optional<std::string> with_check_value(std::string_view text, std::string_view template_name,
                                            std::string_view check_value);

/// The file name, in "d/tl/", of the template that the source at this path is for: its own without
/// the last suffix. Nothing when it has no suffix, or when a file there that is no template has
/// the name.
std::optional<std::string> template_name_of(const std::string& source);

/// A template of a site.
struct NamedValue {
  std::string template_name;  ///< as in the definitions, without "d/tl/"
  std::string check_value;
};

/// Writes the check values into "d/tl/tl" of the site in the working directory, all or none.
Expected<void> update_check_values(const std::vector<NamedValue>& values);

/// What an installation has done.
struct Installed {
  std::string check_value;
  bool is_defined;  ///< "d/tl/tl" has a record of the template, which now holds the check value
};

/// Writes a template into the site in the working directory, and its check value into every record
/// of "d/tl/tl" that has it: both or neither.
Expected<Installed> install_template(const std::string& name, const std::string& text);

}  // namespace toplist::ctl
