// CSV into the files of a site, and out again: what was taken in comes out, nothing else changes,
// and a run reads what the export tells.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "input.h"
#include "run/statistics.h"
#include "toplistctl/lib/formats/columns_file.h"
#include "toplistctl/lib/formats/figures_csv.h"
#include "toplistctl/lib/formats/trades_csv.h"
#include "util/fields.h"

namespace {

using namespace toplist;
using namespace toplist::ctl;
using toplist::fuzz::require;

struct Site {
  std::vector<TradeRecord> trades;
  std::string columns;
  std::string sum;
  std::map<std::string, PeriodBlock, std::less<>> histories;

  [[nodiscard]] Histories totals() const {
    return [this](std::string_view domain) {
      const auto found = histories.find(domain);
      if (found == histories.end()) return Expected<std::optional<PeriodBlock>>(std::nullopt);
      return Expected<std::optional<PeriodBlock>>(found->second);
    };
  }

  [[nodiscard]] std::string trades_csv() const { return export_trades(trades, columns); }
  [[nodiscard]] std::string figures_csv() const { return *export_figures(trades, sum, totals()); }
};

/// Both return whether the CSV was taken.
bool take_trades(Site& site, std::string_view csv) {
  Diagnostics errors;
  ImportedTrades imported = import_trades(csv, site.trades, site.columns, errors,
                                          {.markup = Markup::raw, .remove_missing = true});
  if (!errors.empty()) return false;
  site.trades = std::move(imported.trades);
  site.columns = std::move(imported.columns);
  return true;
}
bool take_figures(Site& site, std::string_view csv) {
  Diagnostics errors;
  auto imported = import_figures(csv, site.trades, site.sum, site.totals(), errors);
  if (!errors.empty()) return false;
  site.sum = std::move(imported->sum);
  for (const auto& [domain, totals] : imported->histories) site.histories[domain] = totals;
  return true;
}

bool same_trades(const Site& a, const Site& b) {
  return a.trades.size() == b.trades.size() &&
         std::memcmp(a.trades.data(), b.trades.data(), a.trades.size() * sizeof(TradeRecord)) == 0;
}

bool has_twins(const Site& site) {
  std::set<std::int32_t> ids;
  return std::any_of(site.trades.begin(), site.trades.end(), [&ids](const TradeRecord& trade) {
    return !ids.insert(trade.trade_id).second;
  });
}

/// Imports what the site exports. An import may refuse what a site should not hold, such as an id
/// twice; what it takes must change nothing.
void take_own_export(const Site& site, bool must_take) {
  Site same = site;
  const bool took_trades = take_trades(same, site.trades_csv());
  require(took_trades || !must_take, "own trades refused");
  const bool padded = site.trades.size() < kFewestTrades || site.columns.empty();
  require(!took_trades || padded || (same_trades(same, site) && same.columns == site.columns),
          "own trades change something");
  same = site;
  if (take_figures(same, site.figures_csv())) {
    require(same.sum == site.sum && same.figures_csv() == site.figures_csv(),
            "own figures change something");
  }
}

void copy_site(const Site& site) {
  Site copy;
  const std::string trades = site.trades_csv();
  if (!take_trades(copy, trades)) return;
  const bool has_columns = !trades.starts_with("id,domain,url,status\r\n");
  require(site.trades.size() < kFewestTrades || !has_columns || copy.trades_csv() == trades,
          "trades of a copy differ");
  const std::string figures = site.figures_csv();
  if (!take_figures(copy, figures)) return;
  const std::string again = copy.figures_csv();
  require(again.starts_with(figures), "figures of a copy differ");
}

void compare_with_run(const Site& site) {
  if (has_twins(site)) return;  // a run tells these apart by their status
  std::vector<TradeRow> rows = build_rows(site.trades);
  attach_extra_columns(site.columns, rows);
  read_recent_periods(site.sum, rows);
  const ColumnsFile columns(site.columns);
  const std::string csv = site.figures_csv();
  for (const TradeRow& row : rows) {
    require(columns.of(row.domain) == row.extra_columns, "columns differ from a run's");
    const PeriodBlock& block = row.periods[kPeriod07];
    const std::size_t line = csv.find("\r\n" + row.id + ",07,");
    const std::string rin = row.id + ",07," + std::to_string(block.rin) + ",";
    const std::string further = "," + std::to_string(block.further[2]) + "\r\n";
    require(line == std::string::npos ? block.rin == 0 && block.further[2] == 0
                                      : csv.compare(line + 2, rin.size(), rin) == 0 &&
                                            csv.find(further, line + 2) + further.size() ==
                                                csv.find("\r\n", line + 2) + 2,
            "figures differ from a run's");
  }
}

/// Copies a text with its end as far as there is room; a record may hold one without an end.
template <std::size_t N>
void put(char (&field)[N], std::string_view text) {
  std::memset(field, 0, N);
  text.copy(field, N);
}

/// A record of which every byte that nobody reads is set.
TradeRecord trade_of(std::string_view line) {
  TradeRecord trade;
  std::memset(static_cast<void*>(&trade), 0xA5, sizeof trade);
  trade.trade_id = trade.status = 0;
  FieldReader fields(line, '\t');
  std::string_view domain, url;
  fields.next_number(trade.trade_id);
  fields.next_number(trade.status);
  fields.next(domain);
  fields.next(url);
  put(trade.domain, domain);
  put(trade.url, url);
  return trade;
}

}  // namespace

// The texts are "trades.csv", "figures.csv", "d/tl/tl.a1", "d/t/sum" and the trades, a line each:
// id, status, domain and address. Form feeds lie between the texts, tabulators in the lines.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FieldReader texts({reinterpret_cast<const char*>(bytes), size}, '\f');
  std::string_view trades, figures, columns, sum, records;
  for (std::string_view* text : {&trades, &figures, &columns, &sum, &records}) texts.next(*text);
  Site site{{}, std::string(columns), std::string(sum), {}};
  FieldReader lines(records, kLineSeparator);
  for (std::string_view line; lines.next(line);) site.trades.push_back(trade_of(line));
  take_own_export(site, false);
  copy_site(site);
  compare_with_run(site);
  if (!take_trades(site, trades)) return 0;
  take_figures(site, figures);
  take_own_export(site, !has_twins(site));
  copy_site(site);
  compare_with_run(site);
  return 0;
}
