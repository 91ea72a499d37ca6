#pragma once

#include <vector>

#include "toplistctl/lib/diagnostics/diagnostic.h"

/// Every kind of fault in the files that people and other programs write: its name, what a run does
/// about it, and what to do.
namespace toplist::ctl::kinds {

/// A kind that all() lists.
struct Listed : Kind {
  Listed(std::string_view kind, Effect becomes, std::string_view what_to_do)
      : Kind{kind, becomes, what_to_do} {
    list().push_back(this);
  }
  static std::vector<const Kind*>& list() {
    static std::vector<const Kind*> kinds;
    return kinds;
  }
};

/// All kinds below, in their order.
inline const std::vector<const Kind*>& all() { return Listed::list(); }

// --- files and folders ---

inline const Listed kNoSite{
    "no-site", Effect::stop,
    "Go to the site's root or name it with --site. toplistctl init creates a new site."};
inline const Listed kMissingFile{
    "missing-file", Effect::stop,
    "Restore the file from a backup, or let the site write it again. The user that runs toplist "
    "must be able to read it."};
inline const Listed kUnusableFile{
    "unusable-file", Effect::stop,
    "Put a regular file in its place. A run waits for a FIFO forever and reads a device until the "
    "memory is full."};
inline const Listed kByteOrderMark{
    "byte-order-mark", Effect::show,
    "Save the file as UTF-8 without a byte order mark (BOM). The three bytes at the start count as "
    "part of the first value."};
inline const Listed kLogFolder{
    "log-folder", Effect::lose,
    "Create the folder and let the user that runs toplist write to it. Until then no failure is "
    "logged."};
inline const Listed kLogFile{
    "log-file", Effect::lose,
    "Let the user that runs toplist write to the file. Until then no failure is logged."};
inline const Listed kLockFile{
    "lock-file", Effect::stop,
    "Give the lock file to the user that runs toplist, or remove it. Until then every scheduled "
    "run that uses flock fails."};
inline const Listed kUnfinishedChange{
    "unfinished-change", Effect::show,
    "Run toplistctl undo. It puts the old files back, and so does the next command that changes "
    "the site. Some files are new and some old until then."};
inline const Listed kLeftoverFile{
    "leftover-file", Effect::note,
    "Nothing needs to be done: the next command that changes the site removes it."};
inline const Listed kHarvestFolder{
    "harvest-folder", Effect::lose,
    "Create the folder and let the user that runs toplist write to it. Until then no thumbnail is "
    "harvested."};

// --- the trade database ---

inline const Listed kTooFewRecords{
    "too-few-records", Effect::stop,
    "Wait until the site has written the whole database, or add trades. A run takes a database "
    "this small for one that is still being written."};
inline const Listed kCutRecord{
    "cut-record", Effect::show,
    "Let the site write the database again. The last record is incomplete, so its trade counts as "
    "switched off."};
inline const Listed kNoActiveTrades{"no-active-trades", Effect::stop,
                                    "Switch on at least one trade (status 1)."};
inline const Listed kDuplicateId{
    "duplicate-id", Effect::show,
    "Give each active trade its own number. Only the first of them gets the recent figures."};
inline const Listed kDuplicateDomain{
    "duplicate-domain", Effect::show,
    "Remove one of the two trades. They share their history, columns and thumbnail."};
inline const Listed kBadDomain{
    "bad-domain", Effect::show,
    "Correct the trade's domain. It names the history, the columns and the thumbnail."};

// --- figures and columns ---

inline const Listed kNoFigures{
    "no-figures", Effect::show,
    "Let the site write the trades' records, with the numbers written as in the database. Until "
    "then all trades have 0 in all recent figures."};
inline const Listed kSumFields{
    "sum-fields", Effect::show,
    "Let the site write the file again. Fields are counted across line breaks, so all figures "
    "after this place go to the wrong fields."};
inline const Listed kBadFigure{
    "bad-figure", Effect::show,
    "Let the site write the figure again, as a whole number from 0 to 2147483647. A run reads the "
    "digits up to the first other character and keeps the low 32 bits."};
inline const Listed kShiftedColumns{
    "shifted-columns", Effect::show,
    "Look at the program that writes the file. There cannot be more unique visitors (uin) than "
    "visits (rin), so the columns are probably shifted."};
inline const Listed kUnknownSumId{
    "unknown-sum-id", Effect::note,
    "Correct the number or remove the record. These figures belong to no trade of the database."};
inline const Listed kDuplicateSumId{
    "duplicate-sum-id", Effect::show,
    "Remove the other records. Only the last record of a number counts."};
inline const Listed kNoSumRecord{
    "no-sum-record", Effect::show,
    "Let the site write a record for the trade, with the number as in the database and without "
    "leading zeros. Until then all its recent figures and percentages are 0."};
inline const Listed kNoHistories{
    "no-histories", Effect::log,
    "Let the site write the histories, and let the user that runs toplist read them. Until then "
    "all all-time figures are 0 and every run logs a line per trade."};
inline const Listed kRenamedHistory{
    "renamed-history", Effect::log,
    "If the trade was renamed, move its history with mv. Until then its all-time figures are 0."};
inline const Listed kMissingHistory{
    "missing-history", Effect::log,
    "Let the site write the trade's history, or create an empty file in its place."};
inline const Listed kHistoryFields{
    "history-fields", Effect::show,
    "Fix the line. Fields are counted across line breaks, so all figures after this place go to "
    "the wrong fields."};
inline const Listed kShortHeader{
    "short-header", Effect::show,
    "Begin the file with a line of one unused field, \"domain\" and at least one column name, each "
    "ended by \"|\". Until then no trade has any column."};
inline const Listed kColumnFields{
    "column-fields", Effect::show,
    "Fix the line. Every line needs as many fields as the header, or values after this place go to "
    "the wrong trades and columns."};
inline const Listed kDuplicateColumns{
    "duplicate-columns", Effect::show,
    "Remove one of the lines. The values of the later line become further columns of the first."};
inline const Listed kNoColumns{
    "no-columns", Effect::show,
    "Add a line for the trade's domain. Without it the trade has no title, description or other "
    "column."};
inline const Listed kMarkInValue{
    "mark-in-value", Effect::show,
    "Write the value without \"%%\". A template that shows it takes \"%%\" for a tag, and the run "
    "may stop there."};
inline const Listed kMarkupInValue{
    "markup-in-value", Effect::show,
    "Write the value without HTML. Pages show it unchanged, so a script in it runs in every "
    "visitor's browser."};

// --- harvest configuration and thumbnails ---

inline const Listed kShortConfiguration{
    "short-configuration", Effect::show,
    "Write all seven lines. A missing line counts as \"0\". On line 6 this means that trades "
    "without a thumbnail are not shown."};
inline const Listed kLongConfiguration{
    "long-configuration", Effect::lose,
    "Remove everything after line 7. A harvest with more lines stores no thumbnail."};
inline const Listed kCarriageReturn{
    "carriage-return", Effect::show,
    "End the lines with a line feed only (Unix line ends). The carriage return counts as part of "
    "the value."};
inline const Listed kUnknownFetchMethod{
    "unknown-fetch-method", Effect::lose,
    "Write \"0\", \"1\", \"2\" or \"3\" on line 5. With any other value nothing is fetched."};
inline const Listed kMissingTool{
    "missing-tool", Effect::lose,
    "Install the program where the scheduler finds it. Cron looks in /usr/bin and /bin unless the "
    "crontab sets PATH. Use --path to check other folders."};
inline const Listed kThumbnailSize{
    "thumbnail-size", Effect::lose,
    "Write nothing after toplist-thumbnail on line 2, and WIDTHxHEIGHT on line 3, such as 240x180, "
    "or leave it empty. With other words toplist-thumbnail removes every picture."};
inline const Listed kNeedsDownloader{
    "needs-downloader", Effect::lose,
    "Write \"1\" or \"3\" on line 5 of the configuration. The built-in client supports only plain "
    "HTTP on port 80."};
inline const Listed kOtherHost{
    "other-host", Effect::show,
    "Write toplist-thumbnail on line 2 of the configuration: it works on the picture just stored. "
    "Or make the trade's domain the host of its page, without \"www.\"."};
inline const Listed kThumbnailSlash{
    "thumbnail-slash", Effect::lose,
    "End the folder on line 1 with \"/\". The names of harvested pictures are this text followed "
    "by the domain."};
inline const Listed kThumbnailFolder{
    "thumbnail-folder", Effect::stop,
    "Create the folder, correct line 1 of the configuration, or write \"1\" on line 6 so that "
    "thumbnails are optional."};
inline const Listed kNoThumbnails{
    "no-thumbnails", Effect::show,
    "Harvest pictures, correct line 1 of the configuration, or write \"1\" on line 6 so that "
    "thumbnails are optional. Until then no toplist shows a trade."};
inline const Listed kMissingThumbnail{
    "missing-thumbnail", Effect::show,
    "Put the trade's picture there, harvest it, or write \"1\" on line 6 of the configuration. "
    "Until then no toplist shows the trade."};

// --- definitions ---

inline const Listed kDefinitionFields{
    "definition-fields", Effect::show,
    "Fix the line. Fields are counted across line breaks, so toplists from here on are read "
    "wrongly."};
inline const Listed kNoToplists{"no-toplists", Effect::stop,
                                "Define toplists, each with a template and a page."};
inline const Listed kBuildMode{
    "build-mode", Effect::skip,
    "Write \"1\" (build while the check value is right) or \"2\" (build always)."};
inline const Listed kCheckValue{
    "check-value", Effect::skip,
    "Look at the last change of the template. If it is right, run toplistctl digest --update "
    "TEMPLATE."};
inline const Listed kSkippedTemplate{
    "skipped-template", Effect::skip,
    "Restore the template from a backup, or remove the toplist from d/tl/tl. Until then its page "
    "stays as it is."};
inline const Listed kMissingTemplate{
    "missing-template", Effect::stop,
    "Restore the template from a backup, or remove the toplist from d/tl/tl. Until then no later "
    "toplist is built either."};
inline const Listed kOrderBy{
    "order-by", Effect::show,
    "Write \"1\" to \"60\", without blanks or leading zeros. Any other value ranks by rin24."};
inline const Listed kOutput{
    "output", Effect::stop,
    "Create the page's folder as the user that runs toplist. Until then no later toplist is built "
    "either."};
inline const Listed kOutputOwner{
    "output-owner", Effect::stop,
    "Give the page and its folder to the user that runs toplist, with chown. Until then no later "
    "toplist is built either."};
inline const Listed kOverwrittenFile{
    "overwritten-file", Effect::overwrite,
    "Give the toplist another page. The next run overwrites this file with the page."};
inline const Listed kCutPage{
    "cut-page", Effect::show,
    "Visitors see an incomplete page. Make room on the disk if it is full, then run toplist."};
inline const Listed kLittleRoom{
    "little-room", Effect::show,
    "Make room on the disk. On a full disk a run leaves empty or cut pages and logs nothing."};
inline const Listed kOldPage{
    "old-page", Effect::show,
    "Look at the timer or the cron line. The next run would write the page, but no run has done "
    "so. toplistctl status shows more."};
inline const Listed kDuplicateOutput{
    "duplicate-output", Effect::show,
    "Give each toplist its own page. The later toplist overwrites the page of the earlier one."};
inline const Listed kEmptyToplist{
    "empty-toplist", Effect::show,
    "Loosen the toplist's settings. toplistctl show toplists shows how many trades each of them "
    "drops."};

// --- settings and groups ---

inline const Listed kSettingFields{
    "setting-fields", Effect::show,
    "Complete the setting. Fields are counted across line breaks, and an incomplete setting is "
    "ignored."};
inline const Listed kNoEquals{"no-equals", Effect::show,
                              "Write the setting as key=value. Without \"=\" it is ignored."};
inline const Listed kUnknownTemplate{
    "unknown-template", Effect::show,
    "Correct the template's name or remove the setting. No toplist has this template, so the "
    "setting has no effect."};
inline const Listed kUnknownKey{
    "unknown-key", Effect::show,
    "Correct the key; toplist-site(5) lists all keys. This setting has no effect."};
inline const Listed kBadNumber{"bad-number", Effect::show,
                               "Write a whole number of 32 bits, or -1 to switch the minimum off."};
inline const Listed kEmptyList{
    "empty-list", Effect::show,
    "Write domains of at least 3 characters, separated by commas, 4 characters in all. This list "
    "restricts nothing."};
inline const Listed kMissingGroup{
    "missing-group", Effect::log,
    "Create the group or correct its name. Until then the setting restricts nothing."};
inline const Listed kEmptyGroup{
    "empty-group", Effect::show,
    "Add members after the group's first record, which is a header. Until then the group restricts "
    "nothing."};
inline const Listed kGroupFields{
    "group-fields", Effect::show,
    "Fix the line. Fields are counted across line breaks, so members after this place are read "
    "wrongly."};

// --- templates and their sources ---

inline const Listed kStraySpot{
    "stray-mark", Effect::stop,
    "Remove the \"%%\" or complete the tag. Every \"%%\" starts a tag and needs 9 more characters "
    "on its line. The run stops here with an abort."};
inline const Listed kMalformedTag{
    "malformed-tag", Effect::show,
    "Write a tag as %%abc_000%% or %%abcde_000%%, and a percent sign as a single \"%\". The rest "
    "of this line stays unfilled, and on all later lines only the first tag is filled in."};
inline const Listed kUnknownName{
    "unknown-name", Effect::show,
    "Correct the tag's name. Names of 3 characters need the short form, names of 5 the long one. "
    "The page shows nothing in its place."};
inline const Listed kRankBeyondList{
    "rank-beyond-list", Effect::note,
    "Name fewer ranks if there will never be more trades. The page shows a blank in its place."};
inline const Listed kOddRank{"odd-rank", Effect::show,
                             "Write the rank in three digits. 000 is the first trade."};
inline const Listed kOddColumn{
    "odd-column", Effect::show,
    "Write %%att00_000%%, with two digits that number the columns after the picture."};
inline const Listed kMissingColumn{
    "missing-column", Effect::show,
    "Add the column to \"d/tl/tl.a1\" or name another one. No trade has it, so the page shows "
    "nothing in its place."};
inline const Listed kOpenBlock{
    "open-block", Effect::show,
    "Close the block with \"</tlxt>\". Until then the page lacks the rest of the template."};
inline const Listed kTooManyTags{
    "too-many-tags", Effect::show,
    "Make the template shorter. After 50,000 tags and lines without tags, only the first tag of "
    "each line is filled in."};
inline const Listed kSourceDiffers{
    "source-differs", Effect::show,
    "If the source is right, run toplistctl expand --install SOURCE. If the template is right, "
    "change the source, or the next expand overwrites the template."};
inline const Listed kSourceError{
    "source-error", Effect::show,
    "Fix the source. Until then toplistctl expand cannot write the template."};

// --- CSV files ---

inline const Listed kCsvError{"csv-error", Effect::stop, "Fix the CSV file. Nothing was imported."};

// --- unused files ---

inline const Listed kUnusedTemplate{"unused-template", Effect::note,
                                    "Define a toplist with it, or remove the file."};
inline const Listed kUnusedHistory{
    "unused-history", Effect::note,
    "Remove the file, or keep it for a future trade. It belongs to no trade of the database."};
inline const Listed kUnusedThumbnail{"unused-thumbnail", Effect::note,
                                     "Remove the file. It belongs to no trade of the database."};

}  // namespace toplist::ctl::kinds
