#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toplistctl/lib/diagnostics/report.h"
#include "toplistctl/lib/site_view/site_view.h"

/// Finds everything in a site that makes a run log, skip, stop or show something wrong. Only reads
/// the site. Each function adds what it finds in one kind of file.
namespace toplist::ctl {

/// Where cron looks for programs unless a crontab sets PATH.
inline constexpr const char* kCronPath = "/usr/bin:/bin";

/// All findings, in the order in which a run reads the files. `program_path` is where the scheduler
/// looks for the programs of a harvest, in the form of PATH.
Diagnostics check_site(const SiteView& site, std::string_view program_path = kCronPath);

/// "d/t/index".
void check_trades(const SiteView& site, Diagnostics& findings);

/// "d/tl/vantaig", the log, and the folders of thumbnails and downloads.
void check_configuration(const SiteView& site, Diagnostics& findings);

/// The programs of a harvest, and the active trades that it visits.
void check_harvest(const SiteView& site, std::string_view program_path, Diagnostics& findings);

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

/// The pages: what they overwrite, how old they are, whether they are complete and have room.
void check_pages(const SiteView& site, Diagnostics& findings);

/// The templates of all toplists, also of those that are skipped.
void check_templates(const SiteView& site, Diagnostics& findings);

/// "d/tl/<template>.src", the sources of the templates.
void check_sources(const SiteView& site, Diagnostics& findings);

/// Files that no toplist and no trade of the database needs.
void check_unused_files(const SiteView& site, Diagnostics& findings);

// --- what the checks share ---

/// The text of a file that a run reads. Nothing, reported as `missing`, when it cannot be opened or
/// read, or as kUnusableFile, when it is no regular file. Reports a byte order mark.
std::optional<std::string> read_input(const std::string& path, const Kind& missing,
                                      Diagnostics& findings);

/// Where a file of records may have line breaks.
enum class LineBreaks {
  between_records,  ///< in the first field of a record only
  anywhere,
};

/// Reports the first line of a file of "|"-separated fields that breaks a record of `size` fields,
/// or the last line if its record is incomplete. Ignores line breaks and blanks at the file's end.
/// False if there is such a line.
bool check_fields(const Kind& kind, const std::string& path, std::string_view text,
                  std::size_t size, Diagnostics& findings,
                  LineBreaks breaks = LineBreaks::between_records);

/// Reports that no active trade has something, if `lacking` are all of them.
void check_none_has(const Kind& kind, const std::string& file, std::size_t lacking,
                    const SiteView& site, Diagnostics& findings);

/// The whole number in a field, clamped to 64 bits. Ignores blanks around it. Nothing for any other
/// text.
std::optional<std::int64_t> whole_number(std::string_view field);

/// The text without the line breaks and blanks at its end.
std::string_view without_end_blanks(std::string_view text);

/// Whether a browser would take a part of the text for a tag or a comment.
bool holds_markup(std::string_view text);

/// The sorted paths of the regular files in a folder ("d/tl/") whose names have this end; none if
/// the folder cannot be listed.
std::vector<std::string> files_in(std::string_view folder, std::string_view suffix);

/// The sources of templates.
std::vector<std::string> find_sources();

}  // namespace toplist::ctl
