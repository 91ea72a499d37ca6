#include "toplistctl/commands/check/selection.h"

#include <utility>

#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/site_view/rehearsal.h"

namespace toplist::ctl {
namespace {

using KindList = std::vector<const Kind*>;

bool holds(const KindList& list, const Kind* kind) {
  return std::find(list.begin(), list.end(), kind) != list.end();
}

/// A kind of fault that causes others. If some of those have another cause, the next check finds
/// them, after this one is fixed.
struct Cause {
  const Kind& kind;
  std::string_view file;  ///< where it is found; empty: anywhere
  KindList consequences;  ///< empty: everything
};

const std::vector<Cause>& causes() {
  using namespace kinds;
  static const KindList of_trades = {&kUnknownSumId, &kRankBeyondList, &kUnusedHistory,
                                     &kUnusedThumbnail, &kEmptyToplist};
  static const KindList of_definitions = {&kUnknownTemplate, &kUnusedTemplate};
  static const KindList of_folder = {&kThumbnailFolder, &kNoThumbnails, &kMissingThumbnail,
                                     &kEmptyToplist};
  static const KindList of_configuration = {
      &kHarvestFolder,    &kThumbnailSlash,  &kUnknownFetchMethod,
      &kMissingTool,      &kThumbnailFolder, &kNoThumbnails,
      &kMissingThumbnail, &kEmptyToplist,    &kUnusedThumbnail};
  static const std::vector<Cause> table = {
      {kNoSite, {}, {}},
      {kMissingFile, kTradesPath, of_trades},
      {kUnusableFile, kTradesPath, of_trades},
      {kTooFewRecords, {}, of_trades},
      {kByteOrderMark,
       kTradesPath,
       {&kCutRecord, &kNoActiveTrades, &kBadDomain, &kUnknownSumId, &kUnusedHistory,
        &kUnusedThumbnail}},
      {kNoActiveTrades, {}, {&kRankBeyondList}},
      {kDuplicateId, {}, {&kDuplicateSumId}},
      {kDuplicateDomain, {}, {&kDuplicateColumns}},
      {kMissingFile, kSumPath, {&kEmptyToplist}},
      {kUnusableFile, kSumPath, {&kEmptyToplist}},
      {kNoFigures, {}, {&kNoSumRecord, &kEmptyToplist}},
      {kSumFields, {}, {&kEmptyToplist, &kShiftedColumns}},
      {kBadFigure, {}, {&kEmptyToplist}},
      {kShiftedColumns, {}, {&kEmptyToplist}},
      {kNoHistories, {}, {&kMissingHistory, &kRenamedHistory, &kUnusedHistory}},
      {kRenamedHistory, {}, {&kUnusedHistory}},
      {kUnusableFile, kExtraColumnsPath, {&kNoColumns, &kMissingColumn}},
      {kColumnFields, {}, {&kDuplicateColumns, &kMissingColumn}},
      {kShortConfiguration, {}, of_folder},
      {kCarriageReturn, {}, of_configuration},
      {kByteOrderMark, kHarvestConfigPath, of_configuration},
      {kNoThumbnails, {}, {&kMissingThumbnail, &kEmptyToplist}},
      {kMissingThumbnail, {}, {&kEmptyToplist}},
      {kMissingFile, kDefinitionsPath, of_definitions},
      {kUnusableFile, kDefinitionsPath, of_definitions},
      {kNoToplists, {}, of_definitions},
      {kDefinitionFields,
       {},
       {&kNoToplists, &kBuildMode, &kCheckValue, &kMissingTemplate, &kSkippedTemplate, &kOrderBy,
        &kOutput, &kDuplicateOutput, &kUnknownTemplate, &kUnusedTemplate}},
      {kSettingFields,
       {},
       {&kNoEquals, &kUnknownTemplate, &kUnknownKey, &kBadNumber, &kEmptyList, &kMissingGroup}},
      {kBadNumber, {}, {&kEmptyToplist}},
      {kGroupFields, {}, {&kEmptyGroup, &kEmptyToplist}},
      {kEmptyGroup, {}, {&kEmptyToplist}},
      {kUnfinishedChange, {}, {&kLeftoverFile}},
      {kOverwrittenFile, {}, {&kCutPage}},
  };
  return table;
}

/// A cause in this site: the first finding of its kind.
struct Found {
  const Cause* cause;
  Diagnostic* finding;

  [[nodiscard]] bool brings(const Diagnostic& other) const {
    if (cause->consequences.empty()) return other.kind != &cause->kind;
    return holds(cause->consequences, other.kind);
  }
};

std::vector<Found> causes_in(Diagnostics& findings) {
  std::vector<Found> found;
  for (const Cause& cause : causes()) {
    const auto first =
        std::find_if(findings.begin(), findings.end(), [&](const Diagnostic& finding) {
          return finding.kind == &cause.kind &&
                 (cause.file.empty() || finding.place.file == cause.file);
        });
    if (first != findings.end()) found.push_back({&cause, &*first});
  }
  return found;
}

void leave_out_consequences(Diagnostics& findings) {
  const std::vector<Found> found = causes_in(findings);
  for (const Diagnostic& finding : findings) {
    for (const Found& cause : found) {
      if (!cause.brings(finding)) continue;
      cause.finding->brings = std::min(cause.finding->brings, finding.effect());
    }
  }
  std::erase_if(findings, [&found](const Diagnostic& finding) {
    return std::any_of(found.begin(), found.end(),
                       [&finding](const Found& cause) { return cause.brings(finding); });
  });
}

}  // namespace

Selection select(Diagnostics all, const Wanted& wanted) {
  std::erase_if(all,
                [&](const Diagnostic& finding) { return holds(wanted.ignored, finding.kind); });
  leave_out_consequences(all);
  const std::size_t hidden = std::erase_if(
      all, [&](const Diagnostic& finding) { return finding.effect() > wanted.min_effect; });
  std::stable_sort(all.begin(), all.end(), [](const Diagnostic& a, const Diagnostic& b) {
    return a.effect() < b.effect();
  });
  return {std::move(all), hidden};
}

}  // namespace toplist::ctl
