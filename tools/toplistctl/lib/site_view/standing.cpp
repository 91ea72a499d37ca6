#include "toplistctl/lib/site_view/standing.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <string>

#include "run/statistics.h"
#include "toplist/ranking.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_data.h"
#include "toplistctl/lib/templates/template_walk.h"
#include "util/fields.h"

namespace toplist::ctl {
namespace {

/// Why a filter other than a minimum drops a trade.
struct Meaning {
  std::string_view filter;
  const char* text;
};
constexpr Meaning kMeanings[] = {
    {kInactiveFilter, "the trade is not active"},
    {kDomainsKey, "the setting \"domains\" does not name its domain"},
    {kGroupKey, "the setting \"group\" names a group without it"},
    {kThumbnailFilter, "it has no thumbnail, which is required"},
    {kSkippedDomainsKey, "the setting \"skipdomains\" names its domain"},
};

std::size_t sum_record_of(std::string_view id, std::string_view sum) {
  FieldReader fields(sum);
  std::array<std::string_view, kSumFields> record;
  std::size_t found = 0;
  for (std::size_t number = 1; next_record(fields, record) == record.size(); ++number) {
    if (record[1] == id) found = number;
  }
  return found;
}

/// What a run finds for an active trade.
TradeFiles files_of(const SiteView& site, TradeRecord trade, std::string_view sum) {
  trade.status = 1;
  std::vector<TradeRow> rows = build_rows({&trade, 1});
  TradeRow& row = rows.front();
  attach_extra_columns(site.run.columns_file.text(), rows);
  const bool listed = mark_rows_without_thumbnail(site.run.config.thumb_dir(), rows);
  return {.sum_record = sum_record_of(row.id, sum),
          .history = read_file(history_path(row.domain)).has_value(),
          .columns = row.extra_columns.size(),
          .thumbnail = listed && row.mark == 0};
}

void fill_in_rank(Standing& standing, const TradeRow* row) {
  const std::vector<const TradeRow*>& passing = standing.toplist->passing;
  const auto at = std::find(passing.begin(), passing.end(), row);
  if (at == passing.end()) return;
  standing.rank = static_cast<std::size_t>(at - passing.begin());
  standing.has_place =
      ranks_named(*standing.toplist).contains(static_cast<std::int32_t>(*standing.rank));
  if (at != passing.begin()) standing.above = *std::prev(at);
  if (std::next(at) != passing.end()) standing.below = *std::next(at);
}

/// `row` is that of an active trade; nullptr for others.
Standing standing_in(const ToplistView& toplist, const TradeRow* row) {
  if (row == nullptr) return {.toplist = &toplist, .drops = {{kInactiveFilter}}};
  Standing standing{.toplist = &toplist,
                    .figure = order_figure(*row, toplist.definition->order_by),
                    .drops = toplist.filters.drops(*row)};
  fill_in_rank(standing, row);
  return standing;
}

}  // namespace

std::string reason_text(const Drop& drop) {
  for (const Meaning& meaning : kMeanings) {
    if (drop.filter == meaning.filter) return meaning.text;
  }
  return fmt::format("{} is {}, below {}", drop.filter, drop.figure, drop.minimum);
}

bool TradeStanding::is_shown_everywhere() const {
  return std::all_of(toplists.begin(), toplists.end(),
                     [](const Standing& standing) { return standing.is_shown(); });
}

Expected<std::vector<TradeStanding>> standings_of(const SiteView& site, std::string_view trade,
                                                  std::string_view toplist) {
  const auto sum = read_file_if_there(kSumPath);
  if (!sum) return tl::unexpected(sum.error());
  std::vector<TradeStanding> standings;
  auto next_row = site.run.rows.begin();
  for (std::size_t i = 0; i < site.run.trades.size(); ++i) {
    const TradeRecord& record = site.run.trades[i];
    const TradeRow* row = is_active(record) ? &*next_row++ : nullptr;
    if (!is_called(record, trade)) continue;
    TradeStanding standing{i + 1, &record, row, files_of(site, record, sum->value_or("")), {}};
    for (const ToplistView& view : site.toplists) {
      if (toplist.empty() || view.is_called(toplist)) {
        standing.toplists.push_back(standing_in(view, row));
      }
    }
    standings.push_back(std::move(standing));
  }
  return standings;
}

}  // namespace toplist::ctl
