#include "toplistctl/lib/site_files/site_data.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "run/statistics.h"
#include "toplistctl/lib/diagnostics/report.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/read_file.h"

namespace toplist::ctl {
namespace {

std::string_view bytes_of(const std::vector<TradeRecord>& trades) {
  return {reinterpret_cast<const char*>(trades.data()), trades.size() * sizeof(TradeRecord)};
}

}  // namespace

Expected<std::vector<TradeRecord>> read_trades() {
  return read_file(kTradesPath).map(parse_trades);
}

Expected<std::vector<TradeRecord>> read_trades_if_there() {
  return read_file_if_there(kTradesPath).map([](const std::optional<std::string>& bytes) {
    return parse_trades(bytes.value_or(""));
  });
}

bool is_called(const TradeRecord& trade, std::string_view name) {
  return domain_of(trade) == name || std::to_string(trade.trade_id) == name;
}

Expected<SiteTrades> read_site_trades() {
  auto trades = read_trades_if_there();
  if (!trades) return tl::unexpected(trades.error());
  auto columns = read_file_if_there(kExtraColumnsPath);
  if (!columns) return tl::unexpected(columns.error());
  return SiteTrades{std::move(*trades), std::move(*columns)};
}

void write_trades(SiteChange& change, const SiteTrades& before, const ImportedTrades& imported) {
  if (bytes_of(before.trades) != bytes_of(imported.trades)) {
    change.write(kTradesPath, std::string(bytes_of(imported.trades)));
  }
  if (before.columns != imported.columns) change.write(kExtraColumnsPath, imported.columns);
}

int refuse(Diagnostics errors, const std::string& name) {
  std::stable_sort(errors.begin(), errors.end(),
                   [](const Diagnostic& a, const Diagnostic& b) { return a.place < b.place; });
  for (Diagnostic& error : errors) error.place.file = name;
  std::fputs(printable_lines(diagnostics_lines(errors)).c_str(), stderr);
  warn(kNothingChanged);
  return kExitFindings;
}

}  // namespace toplist::ctl
