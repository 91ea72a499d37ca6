#include "toplistctl/check/selection.h"

#include <utility>

#include "toplistctl/check/kinds.h"
#include "toplistctl/site_view/run_inputs.h"

namespace toplist::ctl {
namespace {

using namespace kinds;

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
  static const KindList of_missing_trades = {&kUnknownSumId, &kRankBeyondList, &kUnusedHistory,
                                             &kUnusedThumbnail, &kEmptyToplist};
  static const KindList of_missing_definitions = {&kUnknownTemplate, &kUnusedTemplate};
  static const std::vector<Cause> table = {
      {kNoSite, {}, {}},
      {kMissingFile, kTradesPath, of_missing_trades},
      {kTooFewRecords, {}, of_missing_trades},
      {kNoActiveTrades, {}, {&kRankBeyondList}},
      {kMissingFile, kSumPath, {&kEmptyToplist}},
      {kNoFigures, {}, {&kNoSumRecord, &kEmptyToplist}},
      {kSumFields, {}, {&kEmptyToplist}},
      {kNoHistories, {}, {&kMissingHistory}},
      {kColumnFields, {}, {&kDuplicateColumns, &kMissingColumn}},
      {kShortConfiguration,
       {},
       {&kThumbnailFolder, &kNoThumbnails, &kMissingThumbnail, &kEmptyToplist}},
      {kCarriageReturn,
       {},
       {&kHarvestFolder, &kThumbnailSlash, &kUnknownFetchMethod, &kMissingTool, &kThumbnailFolder,
        &kNoThumbnails, &kMissingThumbnail, &kEmptyToplist}},
      {kNoThumbnails, {}, {&kMissingThumbnail, &kEmptyToplist}},
      {kMissingFile, kDefinitionsPath, of_missing_definitions},
      {kNoToplists, {}, of_missing_definitions},
      {kDefinitionFields,
       {},
       {&kNoToplists, &kBuildMode, &kCheckValue, &kMissingTemplate, &kOrderBy, &kOutput,
        &kDuplicateOutput, &kUnknownTemplate, &kUnusedTemplate}},
      {kSettingFields,
       {},
       {&kNoEquals, &kUnknownTemplate, &kUnknownKey, &kBadNumber, &kEmptyList, &kMissingGroup}},
      {kGroupFields, {}, {&kEmptyGroup, &kEmptyToplist}},
  };
  return table;
}

/// A cause that the site has: the first finding that is one.
struct Found {
  const Cause* cause;
  Finding* finding;

  [[nodiscard]] bool brings(const Finding& other) const {
    if (cause->consequences.empty()) return other.kind != &cause->kind;
    return holds(cause->consequences, other.kind);
  }
};

std::vector<Found> causes_in(Findings& findings) {
  std::vector<Found> found;
  for (const Cause& cause : causes()) {
    const auto first = std::find_if(findings.begin(), findings.end(), [&](const Finding& finding) {
      return finding.kind == &cause.kind && (cause.file.empty() || finding.file == cause.file);
    });
    if (first != findings.end()) found.push_back({&cause, &*first});
  }
  return found;
}

void leave_out_consequences(Findings& findings) {
  const std::vector<Found> found = causes_in(findings);
  const auto follows = [&found](const Finding& finding) {
    return std::any_of(found.begin(), found.end(),
                       [&finding](const Found& cause) { return cause.brings(finding); });
  };
  for (const Finding& finding : findings) {
    for (const Found& cause : found) {
      if (!cause.brings(finding)) continue;
      cause.finding->brings = std::min(cause.finding->brings, finding.effect());
    }
  }
  std::erase_if(findings, follows);
}

}  // namespace

Selection select(Findings all, const Wanted& wanted) {
  std::erase_if(all, [&](const Finding& finding) { return holds(wanted.ignored, finding.kind); });
  leave_out_consequences(all);
  const std::size_t less_grave = std::erase_if(
      all, [&](const Finding& finding) { return finding.effect() > wanted.min_effect; });
  return {std::move(all), less_grave};
}

}  // namespace toplist::ctl
