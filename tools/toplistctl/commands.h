#pragma once

#include <CLI/CLI.hpp>

/// The subcommands of toplistctl, one file each. A function adds its subcommand to `app`; when the
/// subcommand has run it leaves the exit status in `exit_status`, which must outlive the parsing.
namespace toplist::ctl {

/// check: tells what is wrong with a site.
void add_check_command(CLI::App& app, int& exit_status);

/// show trades|toplists|log: what a site holds.
void add_show_command(CLI::App& app, int& exit_status);

/// digest TEMPLATE...: the check values of templates.
void add_digest_command(CLI::App& app, int& exit_status);

/// sample DIR: lays out a site of invented trades.
void add_sample_command(CLI::App& app, int& exit_status);

}  // namespace toplist::ctl
