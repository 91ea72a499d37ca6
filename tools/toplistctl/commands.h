#pragma once

#include <CLI/CLI.hpp>

/// The subcommands of toplistctl, one file each. A function adds its subcommand to `app`; when the
/// subcommand has run it leaves the exit status in `exit_status`, which must outlive the parsing.
namespace toplist::ctl {

/// sample DIR: lays out a site of invented trades.
void add_sample_command(CLI::App& app, int& exit_status);

}  // namespace toplist::ctl
