#pragma once

#include <CLI/CLI.hpp>

#include "toplistctl/lib/command_line/command_line.h"

/// The commands of toplistctl. Each function adds one command to the program.
namespace toplist::ctl {

/// check: tells what is wrong with a site.
void add_check_command(CLI::App& app, int& exit_status);

/// status: whether the schedule is alive.
void add_status_command(CLI::App& app, int& exit_status);

/// show trades|figures|toplists|log: what a site holds.
void add_show_command(CLI::App& app, int& exit_status);

/// render TEMPLATE: the page that a run would write now; or all of them.
void add_render_command(CLI::App& app, int& exit_status);

/// why TRADE: where a trade stands in each toplist, or everything that keeps it out.
void add_why_command(CLI::App& app, int& exit_status);

/// digest TEMPLATE...: the check values of templates.
void add_digest_command(CLI::App& app, int& exit_status);

/// expand SOURCE: a template out of its source.
void add_expand_command(CLI::App& app, int& exit_status);

/// export trades|figures|toplist: a site's data as CSV.
void add_export_command(CLI::App& app, int& exit_status);

/// import trades|figures FILE: a site's data from CSV.
void add_import_command(CLI::App& app, int& exit_status);

/// sample DIR: lays out a site of invented trades.
void add_sample_command(CLI::App& app, int& exit_status);

/// init DIR: lays out an empty site, or a root that harvests for another.
void add_init_command(CLI::App& app, int& exit_status);

/// harvest --explain TRADE: what a harvest makes of a trade.
void add_harvest_command(CLI::App& app, int& exit_status);

/// record: adds the figures of all active trades to a database.
void add_record_command(const Command& program);

/// complete -- WORDS: what a shell may offer for the last of them; not shown in the help. The first
/// line is what the shell itself is to offer ("directory", "file", "user") or empty, every further
/// one is a word.
void add_complete_command(const Command& program);

}  // namespace toplist::ctl
