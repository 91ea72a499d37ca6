#pragma once

#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/site_files/site_file.h"
#include "toplistctl/lib/site_view/site_view.h"

/// Looks for everything in a site that makes a run log, skip, stop or show something other than
/// meant. Nothing is written. Each function adds what it finds about one kind of file.
namespace toplist::ctl {

/// Where cron looks for programs unless a crontab tells it otherwise.
inline constexpr const char* kCronPath = "/usr/bin:/bin";

/// All findings, in the order in which a run comes to the files. `program_path` is where the
/// scheduler looks for the programs that a harvest runs, in the form of PATH.
Diagnostics check_site(const SiteView& site, std::string_view program_path = kCronPath);

/// Whether there is a site at all.
void check_is_site(const SiteView& site, Diagnostics& findings);

/// "d/t/index".
void check_trades(const SiteView& site, Diagnostics& findings);

/// "d/tl/vantaig", and the folders that it names or makes needed.
void check_configuration(const SiteView& site, Diagnostics& findings);

/// The programs that a harvest runs.
void check_programs(const SiteView& site, std::string_view program_path, Diagnostics& findings);

/// Active trades of whom a harvest would fetch nothing, or change another one's picture.
void check_harvested_trades(const SiteView& site, Diagnostics& findings);

/// "d/tl/tl.a1".
void check_columns(const SiteView& site, Diagnostics& findings);

/// "d/h/<domain>.his" of the active trades.
void check_histories(const SiteView& site, Diagnostics& findings);

/// "d/t/sum".
void check_sum(const SiteView& site, Diagnostics& findings);

/// "d/tl/tl".
void check_definitions(const SiteView& site, Diagnostics& findings);

/// "d/tl/tl.ext", and the groups it names.
void check_settings(const SiteView& site, Diagnostics& findings);

/// The pages that "d/tl/tl" names: what they replace, and how old they are.
void check_pages(const SiteView& site, Diagnostics& findings);

/// The templates of all toplists, also of those that are skipped.
void check_templates(const SiteView& site, Diagnostics& findings);

/// "d/tl/<template>.src", the sources beside the templates.
void check_sources(const SiteView& site, Diagnostics& findings);

/// Files that no toplist and no trade of the database has a use for.
void check_unused_files(const SiteView& site, Diagnostics& findings);

/// Reports a file that the run cannot do without; true when it can be opened.
bool check_open(const SiteFile& file, Diagnostics& findings);

/// "cannot be opened" and why, as errno tells.
std::string cannot_open(int error);

/// Reports that none of the active trades has what `lacking` of them have not, if it is so.
void check_none_has(const Kind& kind, const std::string& file, std::size_t lacking,
                    const SiteView& site, Diagnostics& findings);

/// Whether a browser would take a part of the text for a tag or a comment.
bool holds_markup(std::string_view text);

/// The paths of the files in a folder ("d/tl/") whose names end so, sorted; none when it cannot be
/// listed.
std::vector<std::string> files_in(std::string_view folder, std::string_view suffix);

/// The sources beside the templates.
std::vector<std::string> find_sources();

}  // namespace toplist::ctl
