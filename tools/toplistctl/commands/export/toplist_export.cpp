#include "toplistctl/commands/export/toplist_export.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "toplist/ranking.h"
#include "toplistctl/lib/formats/columns_file.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

/// Extra columns of the active trade with most of them, of which tags can name so many.
std::size_t width_of(const ToplistView& toplist) {
  std::size_t width = 0;
  for (const TradeRow* row : toplist.ranking) width = std::max(width, row->extra_columns.size());
  return std::min(width, kNamedColumns);
}

}  // namespace

std::string export_toplist(const ToplistView& toplist, Format format) {
  const std::size_t width = width_of(toplist);
  std::vector<std::string> names{"rank", "id", "domain", "url", "figure"};
  for (std::size_t i = 0; i < width; ++i) names.push_back(column_name(i));
  const std::size_t cells = names.size();
  Records records(std::move(names));
  std::size_t rank = 0;
  for (const TradeRow* row : toplist.passing) {
    List values{rank++, parse_int32(row->id), row->domain, row->url,
                order_figure(*row, toplist.definition->order_by)};
    values.insert(values.end(), row->extra_columns.begin(),
                  row->extra_columns.begin() +
                      static_cast<std::ptrdiff_t>(std::min(width, row->extra_columns.size())));
    values.resize(cells, "");
    records.add(std::move(values));
  }
  return records.text(format);
}

}  // namespace toplist::ctl
