#pragma once

#include "toplistctl/lib/command_line/command_line.h"

/// The commands of toplistctl. Each function adds one command to the program.
namespace toplist::ctl {

/// check: reports what is wrong with a site.
void add_check_command(const Command& program);

/// status: whether the pages are up to date.
void add_status_command(const Command& program);

/// show trades|figures|toplists|log: what a site contains.
void add_show_command(const Command& program);

/// render TEMPLATE: the page that a run would write now; or all of them.
void add_render_command(const Command& program);

/// preview: shows the pages that a run would write now in a browser, and again after every change.
void add_preview_command(const Command& program);

/// why TRADE: the trade's rank in each toplist, or everything that keeps it out.
void add_why_command(const Command& program);

/// digest TEMPLATE...: the check values of templates.
void add_digest_command(const Command& program);

/// expand SOURCE: a template from its source.
void add_expand_command(const Command& program);

/// export trades|figures|toplist: a site's data as CSV.
void add_export_command(const Command& program);

/// import trades|figures FILE: a site's data from CSV.
void add_import_command(const Command& program);

/// set TRADE NAME=VALUE...: changes of one trade.
void add_set_command(const Command& program);

/// undo: puts the files of the last change back.
void add_undo_command(const Command& program);

/// sample DIR: creates a site of invented trades.
void add_sample_command(const Command& program);

/// init DIR: creates an empty site, or a root that harvests for another.
void add_init_command(const Command& program);

/// try-harvest TRADE: what a harvest makes of a trade's page and pictures.
void add_try_harvest_command(const Command& program);

/// record: adds the figures of all active trades to a database.
void add_record_command(const Command& program);

/// report: writes a page about the site's traffic.
void add_report_command(const Command& program);

/// complete -- WORDS: what the last of them may become, for the shell; not shown in the help. The
/// first line names what the shell completes itself ("directory", "file", "user") or is empty. Each
/// further line is a word.
void add_complete_command(const Command& program);

}  // namespace toplist::ctl
