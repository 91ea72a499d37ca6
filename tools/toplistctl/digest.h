#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace toplist::ctl {

/// The text of "d/tl/tl" with the check value in every record of this template. All other bytes
/// stay. Nothing when no record of it has a field for the check value.
std::optional<std::string> with_check_value(std::string_view text, std::string_view template_name,
                                            std::string_view check_value);

/// Replaces a file's contents such that at any time either the old or the new ones are there, also
/// after a crash: a new file beside it is written out to the disk and then takes its name. The file
/// keeps its mode, and its owner where the system lets it. A symbolic link stays one.
///
/// Returns 0 or the errno of what failed; the file is then as it was.
int replace_file(const std::string& path, std::string_view bytes);

}  // namespace toplist::ctl
