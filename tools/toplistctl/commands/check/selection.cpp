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

/// What a site has as long as something else is wrong. Once that is mended, what was of another
/// origin is found by the next check.
struct Cause {
  const Kind& kind;
  std::string_view file;  ///< in which it is found; empty: in any
  KindList consequences;  ///< empty: everything
};

const std::vector<Cause>& causes() {
  static const KindList of_missing_trades = {&kinds::kUnknownSumId, &kinds::kRankBeyondList,
                                             &kinds::kUnusedHistory, &kinds::kUnusedThumbnail,
                                             &kinds::kEmptyToplist};
  static const KindList of_missing_definitions = {&kinds::kUnknownTemplate,
                                                  &kinds::kUnusedTemplate};
  static const std::vector<Cause> table = {
      {kinds::kNoSite, {}, {}},
      {kinds::kMissingFile, kTradesPath, of_missing_trades},
      {kinds::kTooFewRecords, {}, of_missing_trades},
      {kinds::kNoActiveTrades, {}, {&kinds::kRankBeyondList}},
      {kinds::kDuplicateId, {}, {&kinds::kDuplicateSumId}},
      {kinds::kDuplicateDomain, {}, {&kinds::kDuplicateColumns}},
      {kinds::kMissingFile, kSumPath, {&kinds::kEmptyToplist}},
      {kinds::kNoFigures, {}, {&kinds::kNoSumRecord, &kinds::kEmptyToplist}},
      {kinds::kSumFields, {}, {&kinds::kEmptyToplist}},
      {kinds::kNoHistories, {}, {&kinds::kMissingHistory}},
      {kinds::kColumnFields, {}, {&kinds::kDuplicateColumns, &kinds::kMissingColumn}},
      {kinds::kShortConfiguration,
       {},
       {&kinds::kThumbnailFolder, &kinds::kNoThumbnails, &kinds::kMissingThumbnail,
        &kinds::kEmptyToplist}},
      {kinds::kCarriageReturn,
       {},
       {&kinds::kHarvestFolder, &kinds::kThumbnailSlash, &kinds::kUnknownFetchMethod,
        &kinds::kMissingTool, &kinds::kThumbnailFolder, &kinds::kNoThumbnails,
        &kinds::kMissingThumbnail, &kinds::kEmptyToplist}},
      {kinds::kNoThumbnails, {}, {&kinds::kMissingThumbnail, &kinds::kEmptyToplist}},
      {kinds::kMissingFile, kDefinitionsPath, of_missing_definitions},
      {kinds::kNoToplists, {}, of_missing_definitions},
      {kinds::kDefinitionFields,
       {},
       {&kinds::kNoToplists, &kinds::kBuildMode, &kinds::kCheckValue, &kinds::kMissingTemplate,
        &kinds::kOrderBy, &kinds::kOutput, &kinds::kDuplicateOutput, &kinds::kUnknownTemplate,
        &kinds::kUnusedTemplate}},
      {kinds::kSettingFields,
       {},
       {&kinds::kNoEquals, &kinds::kUnknownTemplate, &kinds::kUnknownKey, &kinds::kBadNumber,
        &kinds::kEmptyList, &kinds::kMissingGroup}},
      {kinds::kGroupFields, {}, {&kinds::kEmptyGroup, &kinds::kEmptyToplist}},
  };
  return table;
}

/// A cause that the site has: the first finding that is one.
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
  const auto follows = [&found](const Diagnostic& finding) {
    return std::any_of(found.begin(), found.end(),
                       [&finding](const Found& cause) { return cause.brings(finding); });
  };
  for (const Diagnostic& finding : findings) {
    for (const Found& cause : found) {
      if (!cause.brings(finding)) continue;
      cause.finding->brings = std::min(cause.finding->brings, finding.effect());
    }
  }
  std::erase_if(findings, follows);
}

}  // namespace

Selection select(Diagnostics all, const Wanted& wanted) {
  std::erase_if(all,
                [&](const Diagnostic& finding) { return holds(wanted.ignored, finding.kind); });
  leave_out_consequences(all);
  const std::size_t hidden = std::erase_if(
      all, [&](const Diagnostic& finding) { return finding.effect() > wanted.min_effect; });
  return {std::move(all), hidden};
}

}  // namespace toplist::ctl
