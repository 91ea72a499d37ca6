#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace toplist::ctl {

/// Exit status of a command that could not do its work.
inline constexpr int kCouldNotLook = 2;

inline constexpr const char* kCurrentDirectory = ".";

/// Adds --site DIR to a command.
void add_site_option(CLI::App& command, std::string& directory);

/// Makes the site's root the working directory, as it is in a run; false, told on standard error,
/// when that is not possible.
bool enter_site(const std::string& directory);

}  // namespace toplist::ctl
