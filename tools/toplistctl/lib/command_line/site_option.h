#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>

/// Options that several commands have.
namespace toplist::ctl {

inline constexpr const char* kCurrentDirectory = ".";

/// Adds --site DIR to a command.
CLI::Option* add_site_option(CLI::App& command, std::string& directory);

/// Adds --user NAME, for root: looks as that user would, who may read and write other files.
void add_user_option(CLI::App& command, std::string& user);

/// Adds an option that takes a span of time such as 90s, 15m, 2h or 1d; in seconds.
CLI::Option* add_duration_option(CLI::App& command, const std::string& name,
                                 std::optional<std::int64_t>& seconds, const std::string& about);

/// Enters the site as enter_site(directory, user) of site_root.h does; false, reported on standard
/// error, when that is not possible.
bool enter_or_fail(const std::string& directory, const std::string& user = "");

}  // namespace toplist::ctl
