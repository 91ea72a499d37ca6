#include "toplist/toplist_stage.h"

#include <string>
#include <vector>

#include "render/render.h"
#include "run/sys_log.h"
#include "toplist/alternatives.h"
#include "toplist/definitions.h"
#include "toplist/filters.h"
#include "toplist/ranking.h"
#include "util/file.h"

namespace toplist {
namespace {

/// Finds the trades without a thumbnail; false when that ends the stage.
bool check_thumbnails(const HarvestConfig& config, std::span<TradeRow> rows) {
  if (!config.thumbnails_required()) return true;
  if (mark_rows_without_thumbnail(config.thumb_dir(), rows)) return true;
  write_dir_error_page(config.thumb_dir(), "", 0);
  return false;
}

std::vector<const TradeRow*> admitted_rows(const std::vector<TradeRow*>& ranking,
                                           const ToplistFilters& filters) {
  std::vector<const TradeRow*> admitted;
  for (const TradeRow* row : ranking) {
    if (filters.admit(*row)) admitted.push_back(row);
  }
  return admitted;
}

}  // namespace

void build_toplists(std::span<TradeRow> rows, const HarvestConfig& config) {
  FileBuffer definitions_file;
  if (!read_or_log(kDefinitionsPath, Severity::run_ends, definitions_file)) return;
  const auto definitions = parse_definitions(definitions_file.text());
  if (definitions.empty()) return;

  pick_alternatives(rows);

  FileBuffer settings_file;
  if (!read_or_log(kSettingsPath, Severity::run_ends, settings_file)) return;
  const auto settings = parse_settings(settings_file.text());

  if (!check_thumbnails(config, rows)) return;

  // Each ranking starts from the order that the one before left.
  std::vector<TradeRow*> ranking;
  ranking.reserve(rows.size());
  for (TradeRow& row : rows) ranking.push_back(&row);

  for (const ToplistDefinition& definition : definitions) {
    if (!may_be_built(definition)) continue;
    rank_rows(ranking, definition.order_by);
    const ToplistFilters filters = filters_of(definition.template_path, settings);
    for (const std::string& group : filters.unopened_groups()) {
      log_unopened_file(group, Severity::run_goes_on);
    }
    const auto shown = admitted_rows(ranking, filters);
    // A missing template or page keeps all later toplists from being rendered, on purpose.
    if (!render_toplist(definition.template_path, definition.output_path, shown)) return;
  }
}

}  // namespace toplist
