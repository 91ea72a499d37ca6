#pragma once

#include "toplistctl/check/finding.h"
#include "toplistctl/site_view/site_file.h"
#include "toplistctl/site_view/site_view.h"

/// Looks for everything in a site that makes a run log, skip, stop or show something other than
/// meant. Nothing is written. Each function adds what it finds about one kind of file.
namespace toplist::ctl {

/// Where cron looks for programs unless a crontab tells it otherwise.
inline constexpr const char* kCronPath = "/usr/bin:/bin";

/// All of them, in the order in which a run comes to the files. `program_path` is where the
/// scheduler looks for the programs that a harvest runs, in the form of PATH.
Findings check_site(const SiteView& site, std::string_view program_path = kCronPath);

/// "d/t/index".
void check_trades(const SiteView& site, Findings& findings);

/// "d/tl/vantaig", and the folders that it names or makes needed.
void check_configuration(const SiteView& site, Findings& findings);

/// The programs that a harvest runs.
void check_programs(const SiteView& site, std::string_view program_path, Findings& findings);

/// Active trades of whom a harvest would fetch nothing, or change another one's picture.
void check_harvested_trades(const SiteView& site, Findings& findings);

/// "d/tl/tl.a1".
void check_columns(const SiteView& site, Findings& findings);

/// "d/h/<domain>.his" of the active trades.
void check_histories(const SiteView& site, Findings& findings);

/// "d/t/sum".
void check_sum(const SiteView& site, Findings& findings);

/// "d/tl/tl", and the pages it names.
void check_definitions(const SiteView& site, Findings& findings);

/// "d/tl/tl.ext", and the groups it names.
void check_settings(const SiteView& site, Findings& findings);

/// The templates of all toplists, also of those that are skipped.
void check_templates(const SiteView& site, Findings& findings);

/// "d/tl/<template>.src", the sources beside the templates.
void check_sources(const SiteView& site, Findings& findings);

/// Reports a file that the run cannot do without; true when it can be opened.
bool check_open(const SiteFile& file, Findings& findings);

/// "cannot be opened" and why, as errno tells.
std::string cannot_open(int error);

}  // namespace toplist::ctl
