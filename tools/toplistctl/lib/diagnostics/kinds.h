#pragma once

#include <array>

#include "toplistctl/lib/diagnostics/diagnostic.h"

/// Every kind of fault that a check reports: its name, what a run does about it, what to do.
namespace toplist::ctl::kinds {

// --- files and folders ---

inline constexpr Kind kNoSite{
    "no-site", Effect::stop,
    "Go to the site's root or name it by --site. toplistctl init lays out a new site."};
inline constexpr Kind kMissingFile{
    "missing-file", Effect::stop,
    "Let the site write the file, or fetch it from a backup; the run's user must be able to read "
    "it."};
inline constexpr Kind kLogFolder{
    "log-folder", Effect::lose,
    "Create the folder and let the run's user write to it: without it no failure is ever logged."};
inline constexpr Kind kLogFile{
    "log-file", Effect::lose,
    "Let the run's user write to the file: as it is, no failure is ever logged."};
inline constexpr Kind kHarvestFolder{
    "harvest-folder", Effect::lose,
    "Create the folder and let the run's user write to it: without it no thumbnail is harvested."};

// --- the trade database ---

inline constexpr Kind kTooFewRecords{
    "too-few-records", Effect::stop,
    "A run takes this for a database that is still being written. Wait for the site to finish it, "
    "or add trades."};
inline constexpr Kind kCutRecord{
    "cut-record", Effect::show,
    "The last record is incomplete, so its trade counts as switched off. Let the site write the "
    "database again."};
inline constexpr Kind kNoActiveTrades{"no-active-trades", Effect::stop,
                                      "Switch on at least one trade (status 1)."};
inline constexpr Kind kDuplicateId{
    "duplicate-id", Effect::show,
    "Give each active trade a number of its own: only the first one gets the recent figures."};
inline constexpr Kind kDuplicateDomain{
    "duplicate-domain", Effect::show,
    "Remove one of the two: they share their history, columns and thumbnail."};
inline constexpr Kind kBadDomain{
    "bad-domain", Effect::show,
    "Correct the trade's domain: it names the history, the columns and the thumbnail."};

// --- figures and columns ---

inline constexpr Kind kNoFigures{
    "no-figures", Effect::show,
    "All trades stand with 0 in all recent figures. Let the site write their records, with the "
    "numbers spelled as in the database."};
inline constexpr Kind kSumFields{
    "sum-fields", Effect::show,
    "Fields are counted across line breaks, so all figures behind this place go "
    "to wrong fields. Let the site write the file again."};
inline constexpr Kind kUnknownSumId{
    "unknown-sum-id", Effect::note,
    "These figures belong to no trade of the database. Correct the number, or drop the record."};
inline constexpr Kind kDuplicateSumId{"duplicate-sum-id", Effect::show,
                                      "Only the last record of a number counts: drop the others."};
inline constexpr Kind kNoSumRecord{
    "no-sum-record", Effect::show,
    "The trade stands with 0 in all recent figures and percentages. Let the site write its record "
    "(the number must be spelled as in the database, without zeros in front)."};
inline constexpr Kind kNoHistories{
    "no-histories", Effect::log,
    "All trades stand with 0 in all-time figures, and every run logs each of them. Let the site "
    "write the histories, and the run's user read them."};
inline constexpr Kind kMissingHistory{
    "missing-history", Effect::log,
    "Let the site write the trade's history, or put an empty file in its place."};
inline constexpr Kind kHistoryFields{
    "history-fields", Effect::show,
    "Fields are counted across line breaks, so all figures behind this place go "
    "to wrong fields. Mend the line."};
inline constexpr Kind kShortHeader{
    "short-header", Effect::show,
    "Begin the file with a line of one field that is not used, \"domain\" and at least one column "
    "name, each closed by \"|\": as it is, no trade has any column."};
inline constexpr Kind kColumnFields{
    "column-fields", Effect::show,
    "Every line needs as many fields as the header: values behind this place go to wrong trades "
    "and columns. Mend the line."};
inline constexpr Kind kDuplicateColumns{
    "duplicate-columns", Effect::show,
    "Remove one of the lines: as it is, the values of the later one stand as further columns "
    "behind those of the first."};
inline constexpr Kind kNoColumns{
    "no-columns", Effect::show,
    "The trade has no title, description or other column: add a line for its domain."};
inline constexpr Kind kMarkInValue{
    "mark-in-value", Effect::show,
    "Where a template shows this value its \"%%\" is read as a tag and may stop the run. Write the "
    "value without it."};

inline constexpr Kind kMarkupInValue{"markup-in-value", Effect::show,
                                     "Pages take the value as it is: a script in it runs at every "
                                     "visitor. Write it without markup."};

// --- harvest configuration and thumbnails ---

inline constexpr Kind kShortConfiguration{
    "short-configuration", Effect::show,
    "Write all seven lines. Those that are missing count as \"0\", which for line 6 means that "
    "trades without a thumbnail are not shown."};
inline constexpr Kind kLongConfiguration{
    "long-configuration", Effect::lose,
    "Remove what follows line 7: with more lines the harvest stores no thumbnail."};
inline constexpr Kind kCarriageReturn{
    "carriage-return", Effect::show,
    "End the lines with a line feed only: the carriage return belongs to the value."};
inline constexpr Kind kUnknownFetchMethod{
    "unknown-fetch-method", Effect::lose,
    "Write \"0\", \"1\", \"2\" or \"3\" on line 5: with anything else nothing is fetched."};
inline constexpr Kind kMissingTool{
    "missing-tool", Effect::lose,
    "Install the program where the scheduler looks for it. Cron looks in /usr/bin and /bin unless "
    "the crontab sets PATH; --path tells this check of other folders."};
inline constexpr Kind kNeedsDownloader{
    "needs-downloader", Effect::lose,
    "Write \"1\" or \"3\" on line 5 of the configuration: the built-in client speaks plain HTTP on "
    "port 80 only."};
inline constexpr Kind kOtherHost{
    "other-host", Effect::show,
    "Write toplist-thumbnail on line 2 of the configuration, which works on the picture just "
    "stored, or let the trade's domain be the host of its page, without \"www.\"."};
inline constexpr Kind kThumbnailSlash{
    "thumbnail-slash", Effect::lose,
    "End the folder on line 1 with \"/\": harvested pictures are stored under this text and the "
    "domain."};
inline constexpr Kind kThumbnailFolder{
    "thumbnail-folder", Effect::stop,
    "Create the folder, correct line 1 of the configuration, or write \"1\" on line 6 so that "
    "thumbnails are not required."};
inline constexpr Kind kNoThumbnails{
    "no-thumbnails", Effect::show,
    "No trade is shown in any toplist. Harvest pictures, correct line 1 of the configuration, or "
    "write \"1\" on line 6."};
inline constexpr Kind kMissingThumbnail{
    "missing-thumbnail", Effect::show,
    "The trade is shown in no toplist. Put its picture there, harvest it, or write \"1\" on line 6 "
    "of the configuration."};

// --- definitions ---

inline constexpr Kind kDefinitionFields{
    "definition-fields", Effect::show,
    "Fields are counted across line breaks, so toplists from here on are read "
    "wrongly. Mend the line."};
inline constexpr Kind kNoToplists{"no-toplists", Effect::stop,
                                  "Define toplists, each with a template and an output path."};
inline constexpr Kind kBuildMode{
    "build-mode", Effect::skip,
    "Write \"1\" (built while the check value holds) or \"2\" (always built)."};
inline constexpr Kind kCheckValue{
    "check-value", Effect::skip,
    "Look at the template's last change. If it is as it should be: toplistctl digest --update "
    "TEMPLATE."};
inline constexpr Kind kMissingTemplate{
    "missing-template", Effect::stop,
    "Put the template there or remove the toplist: no toplist behind it is built either."};
inline constexpr Kind kOrderBy{
    "order-by", Effect::show,
    "Write \"1\" to \"60\", without blanks or zeros in front: any other value ranks by rin24."};
inline constexpr Kind kOutput{
    "output", Effect::stop,
    "Create the page's folder and let the run's user write to it: no toplist behind it is built "
    "either."};
inline constexpr Kind kOverwrittenFile{
    "overwritten-file", Effect::overwrite,
    "Give the toplist another page before the next run puts this one in the file's place."};
inline constexpr Kind kOldPage{
    "old-page", Effect::show,
    "The next run would write the page, but no run has come: look at the timer or the cron line. "
    "toplistctl status tells more."};
inline constexpr Kind kDuplicateOutput{
    "duplicate-output", Effect::show,
    "Give each toplist a page of its own: the later one replaces the earlier one's."};
inline constexpr Kind kEmptyToplist{
    "empty-toplist", Effect::show,
    "Loosen the toplist's settings; toplistctl show toplists tells how many trades each drops."};

// --- settings and groups ---

inline constexpr Kind kSettingFields{
    "setting-fields", Effect::show,
    "Fields are counted across line breaks, and an incomplete one is left out. "
    "Complete it."};
inline constexpr Kind kNoEquals{"no-equals", Effect::show,
                                "Write the setting as key=value: without \"=\" it is left out."};
inline constexpr Kind kUnknownTemplate{
    "unknown-template", Effect::show,
    "No toplist has this template, so the setting has no effect. Correct the name or remove the "
    "setting."};
inline constexpr Kind kUnknownKey{
    "unknown-key", Effect::show,
    "The setting has no effect. Keys are rin, uin, out, cef, ctt, ctg with 60 or 24, cprod, tprod, "
    "domains, skipdomains and group."};
inline constexpr Kind kBadNumber{
    "bad-number", Effect::show,
    "Write a whole number of 32 bits, or -1 to switch the minimum off."};
inline constexpr Kind kEmptyList{
    "empty-list", Effect::show,
    "Write domains of at least 3 characters, separated by commas, 4 characters in all: as it is, "
    "the list restricts nothing."};
inline constexpr Kind kMissingGroup{
    "missing-group", Effect::log,
    "Create the group or correct its name: as it is, it restricts nothing."};
inline constexpr Kind kEmptyGroup{
    "empty-group", Effect::show,
    "Add members behind the group's first record, its header: as it is, it restricts nothing."};
inline constexpr Kind kGroupFields{
    "group-fields", Effect::show,
    "Fields are counted across line breaks, so members behind this place are read "
    "wrongly. Mend the line."};

// --- templates ---

inline constexpr Kind kStraySpot{
    "stray-mark", Effect::stop,
    "The run ends here, abnormally. Remove the \"%%\", or complete the tag: every \"%%\" starts a "
    "tag and needs 9 characters behind it on its line."};
inline constexpr Kind kMalformedTag{
    "malformed-tag", Effect::show,
    "Write %%abc_000%% or %%abcde_000%%: name of 3 or 5 characters, a separator, 3 digits. The "
    "rest of the line stays as it is, and on all later lines only the first tag is filled in."};
inline constexpr Kind kUnknownName{
    "unknown-name", Effect::show,
    "Nothing is put in its place. Correct the name; names of 3 characters need the short form and "
    "names of 5 the long one."};
inline constexpr Kind kRankBeyondList{
    "rank-beyond-list", Effect::note,
    "A blank is put in its place, as there are not so many trades. Name fewer ranks if there will "
    "never be more."};
inline constexpr Kind kOddRank{"odd-rank", Effect::show,
                               "Write the rank in three digits: 000 is the first trade."};
inline constexpr Kind kOddColumn{
    "odd-column", Effect::show,
    "Write %%att00_000%%, with two digits that number the columns behind the picture."};
inline constexpr Kind kMissingColumn{
    "missing-column", Effect::show,
    "Nothing is put in its place: no trade has this column. Add it to \"d/tl/tl.a1\" or name "
    "another."};
inline constexpr Kind kOpenBlock{
    "open-block", Effect::show,
    "Close the block with \"</tlxt>\": as it is, the rest of the template is left out."};
inline constexpr Kind kTooManyTags{
    "too-many-tags", Effect::show,
    "A template has a limited number of passes: one for each tag, one for each line without. Make "
    "it "
    "shorter: from here on only the first tag of a line is filled in."};

inline constexpr Kind kSourceDiffers{
    "source-differs", Effect::show,
    "The page comes from the template and not from its source. If the source is right: toplistctl "
    "expand --install SOURCE. If the template is, change the source before that undoes it."};

inline constexpr Kind kSourceError{
    "source-error", Effect::show,
    "Fix the source. Until then toplistctl expand cannot write the template."};

// --- what nothing uses ---

inline constexpr Kind kUnusedTemplate{"unused-template", Effect::note,
                                      "Define a toplist with it, or remove the file."};
inline constexpr Kind kUnusedHistory{
    "unused-history", Effect::note,
    "It belongs to no trade of the database: remove the file, or keep it for a trade to come."};
inline constexpr Kind kUnusedThumbnail{"unused-thumbnail", Effect::note,
                                       "It belongs to no trade of the database: remove the file."};

/// All of them.
inline constexpr std::array kAll{
    &kNoSite,           &kMissingFile,        &kLogFolder,
    &kLogFile,          &kHarvestFolder,      &kTooFewRecords,
    &kCutRecord,        &kNoActiveTrades,     &kDuplicateId,
    &kDuplicateDomain,  &kBadDomain,          &kNoFigures,
    &kSumFields,        &kUnknownSumId,       &kDuplicateSumId,
    &kNoSumRecord,      &kNoHistories,        &kMissingHistory,
    &kHistoryFields,    &kShortHeader,        &kColumnFields,
    &kDuplicateColumns, &kNoColumns,          &kMarkInValue,
    &kMarkupInValue,    &kShortConfiguration, &kLongConfiguration,
    &kCarriageReturn,   &kUnknownFetchMethod, &kMissingTool,
    &kNeedsDownloader,  &kOtherHost,          &kThumbnailSlash,
    &kThumbnailFolder,  &kNoThumbnails,       &kMissingThumbnail,
    &kDefinitionFields, &kNoToplists,         &kBuildMode,
    &kCheckValue,       &kMissingTemplate,    &kOrderBy,
    &kOutput,           &kOverwrittenFile,    &kOldPage,
    &kDuplicateOutput,  &kEmptyToplist,       &kSettingFields,
    &kNoEquals,         &kUnknownTemplate,    &kUnknownKey,
    &kBadNumber,        &kEmptyList,          &kMissingGroup,
    &kEmptyGroup,       &kGroupFields,        &kStraySpot,
    &kMalformedTag,     &kUnknownName,        &kRankBeyondList,
    &kOddRank,          &kOddColumn,          &kMissingColumn,
    &kOpenBlock,        &kTooManyTags,        &kSourceDiffers,
    &kSourceError,      &kUnusedTemplate,     &kUnusedHistory,
    &kUnusedThumbnail,
};

}  // namespace toplist::ctl::kinds
