#include "toplistctl/check/site_data.h"

#include <cerrno>
#include <utility>

#include "toplist/alternatives.h"
#include "toplist/filters.h"
#include "toplist/ranking.h"

namespace toplist::ctl {
namespace {

ToplistView view_of(const ToplistDefinition& definition, std::size_t record,
                    const std::vector<TradeRow*>& ranking,
                    const std::vector<ToplistSetting>& settings) {
  ToplistView view{&definition, record, may_be_built(definition), {}, {}};
  const ToplistFilters filters = filters_of(definition.template_path, settings);
  for (const TradeRow* row : ranking) {
    const std::string_view filter = filters.dropped_by(*row);
    if (filter.empty()) {
      view.passing.push_back(row);
    } else {
      ++view.dropped[filter];
    }
  }
  return view;
}

}  // namespace

SiteFile::SiteFile(std::string path) : path_(std::move(path)) {
  if (!bytes_.read(path_)) error_ = errno;
}

SiteData::SiteData() {
  load_trades(kTradesPath, trades);
  config = parse_harvest_config(config_file.text(), "0");
  build_rows_from_files();
  definitions = parse_definitions(definitions_file.text());
  pick_alternatives(rows);
  settings = parse_settings(settings_file.text());
  if (config_file.is_open() && config.thumbnails_required() &&
      !mark_rows_without_thumbnail(config.thumb_dir(), rows)) {
    thumbnails_error = errno;
  }
  rank_toplists();
}

void SiteData::build_rows_from_files() {
  rows = build_rows(trades);
  attach_extra_columns(columns_file.text(), rows);
  FileBuffer history;
  for (TradeRow& row : rows) {
    if (history.read(history_path(row.domain))) {
      add_history(history.text(), row.periods[kPeriod99]);
    }
  }
  read_recent_periods(sum_file.text(), rows);
}

void SiteData::rank_toplists() {
  std::vector<TradeRow*> ranking;
  ranking.reserve(rows.size());
  for (TradeRow& row : rows) ranking.push_back(&row);
  for (const ToplistDefinition& definition : definitions) {
    // A run ranks only what it builds, and each ranking starts from the one before.
    std::vector<TradeRow*> own = ranking;
    rank_rows(own, definition.order_by);
    toplists.push_back(view_of(definition, toplists.size() + 1, own, settings));
    if (toplists.back().built) ranking = std::move(own);
  }
}

}  // namespace toplist::ctl
