#include <algorithm>

#include "toplist/ranking.h"
#include "toplistctl/commands/show/show.h"
#include "toplistctl/lib/formats/order_names.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

std::vector<std::string> column_names() {
  std::vector<std::string> names{"id", "domain"};
  for (const std::string_view kind : kOrderKinds) names.emplace_back(kind);
  names.insert(names.begin() + 9, "rec");  // behind the counters that toplists are ordered by
  return names;
}

/// The figures in the order of the names.
std::vector<Json> values_of(const TradeRow& row, Period period) {
  const PeriodBlock& block = row.periods[period];
  std::vector<Json> values{parse_int32(row.id), row.domain, block.rin, block.uin, block.out,
                           block.clk,           block.cef,  block.ctg, block.ctt, block.rec};
  values.insert(values.end(), block.percent.begin(), block.percent.end());
  values.insert(values.end(), block.further.begin(), block.further.end());
  return values;
}

}  // namespace

std::string show_figures(SiteView& site, const FiguresWanted& wanted, Format format) {
  std::vector<TradeRow*>& rows = site.run.ranking;
  if (!wanted.order_by.empty()) rank_rows(site.run.rows, wanted.order_by, rows);
  Records records(column_names());
  for (std::size_t i = 0; i < std::min(rows.size(), wanted.top); ++i) {
    records.add(values_of(*rows[i], wanted.period));
  }
  return records.text(format);
}

}  // namespace toplist::ctl
