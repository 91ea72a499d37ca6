#pragma once

#include "toplistctl/check/finding.h"
#include "toplistctl/check/site_data.h"

/// Looks for everything in a site that makes a run log, skip, stop or show something other than
/// meant. Nothing is written. Each function adds what it finds about one kind of file.
namespace toplist::ctl {

/// All of them, in the order in which a run comes to the files.
Findings check_site(const SiteData& site);

/// "d/t/index".
void check_trades(const SiteData& site, Findings& findings);

/// "d/tl/vantaig", and the folders that it names or makes needed.
void check_configuration(const SiteData& site, Findings& findings);

/// "d/tl/tl.a1".
void check_columns(const SiteData& site, Findings& findings);

/// "d/h/<domain>.his" of the active trades.
void check_histories(const SiteData& site, Findings& findings);

/// "d/t/sum".
void check_sum(const SiteData& site, Findings& findings);

/// "d/tl/tl", and the pages it names.
void check_definitions(const SiteData& site, Findings& findings);

/// "d/tl/tl.ext", and the groups it names.
void check_settings(const SiteData& site, Findings& findings);

/// The templates of all toplists, also of those that are skipped.
void check_templates(const SiteData& site, Findings& findings);

/// Reports a file that the run cannot do without; true when it can be opened.
bool check_open(const SiteFile& file, Findings& findings);

/// "cannot be opened" and why, as errno tells.
std::string cannot_open(int error);

}  // namespace toplist::ctl
