#include "toplistctl/lib/formats/figures_csv.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <unordered_map>

#include "run/statistics.h"
#include "toplistctl/lib/formats/csv.h"
#include "toplistctl/lib/formats/sum_file.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

constexpr std::string_view kId = "id";
constexpr std::string_view kPeriod = "period";

constexpr std::string_view kBare07 = "7";  ///< what a spreadsheet makes of "07"
static_assert(kRecentPeriods == kPeriod99);

bool is_column(std::string_view name) {
  return name == kId || name == kPeriod ||
         std::any_of(kFigures.begin(), kFigures.end(),
                     [name](const Figure& figure) { return figure.name == name; });
}

std::optional<std::size_t> find_period(std::string_view name) {
  if (name == kBare07) return kPeriod07;
  const auto found = std::find(kPeriodNames.begin(), kPeriodNames.end(), name);
  if (found == kPeriodNames.end()) return std::nullopt;
  return static_cast<std::size_t>(found - kPeriodNames.begin());
}

bool same_counters(const PeriodBlock& a, const PeriodBlock& b) {
  return std::all_of(kFileOrder.begin(), kFileOrder.end(),
                     [&](Counter counter) { return a.*counter == b.*counter; });
}

void append_row(CsvText& csv, const TradeRecord& trade, std::size_t period, PeriodBlock block) {
  csv.add(trade.trade_id);
  csv.add(kPeriodNames.at(period));
  for (const Figure& figure : kFigures) csv.add(*figure_at(block, figure.field));
  csv.end_row();
}

class FiguresImporter {
 public:
  FiguresImporter(const CsvTable& table, std::span<const TradeRecord> trades,
                  const Histories& histories)
      : table_(table), histories_(histories) {
    for (const Figure& figure : kFigures) {
      if (const auto cell = table.column(figure.name)) cells_.push_back({*cell, &figure});
    }
    trades_.reserve(trades.size());
    for (const TradeRecord& trade : trades) {
      const auto [first, is_new] = by_id_.emplace(trade.trade_id, trades_.size());
      if (!is_new && domain_of(*trades_[first->second].record) != domain_of(trade)) {
        trades_[first->second].shares_id = true;
      }
      trades_.push_back({.record = &trade});
      edit_.values.try_emplace(std::to_string(trade.trade_id));
    }
  }

  Expected<ImportedFigures> import(std::string_view sum) {
    for (std::size_t row = 0; row < table_.rows(); ++row) add_row(row);
    const auto stored = stored_figures(sum, edit_);
    for (const Trade& trade : trades_) {
      change_ = {.id = trade.record->trade_id, .domain = std::string(domain_of(*trade.record))};
      add_recent(trade, stored);
      if (trade.rows[kPeriod99]) {
        const auto added = add_history(trade, *trade.rows[kPeriod99]);
        if (!added) return tl::unexpected(added.error());
      }
      if (!change_.values.empty()) result_.changes.push_back(std::move(change_));
    }
    result_.sum = edited_sum(sum, edit_);
    return std::move(result_);
  }

 private:
  struct Cell {
    std::size_t column;  ///< of the CSV
    const Figure* figure;
  };

  struct Trade {
    const TradeRecord* record;
    std::array<std::optional<std::size_t>, kPeriodCount> rows{};  ///< of the CSV, by period
    PeriodBlock all_time{};
    bool shares_id = false;  ///< with a trade of another domain, thus of another history
  };

  void add_row(std::size_t row) {
    const auto id = table_.number(row, *table_.column(kId));
    if (!id) return;
    const auto found = by_id_.find(*id);
    if (found == by_id_.end()) return error(row, kId, "the site has no trade with this id");
    const auto period = find_period(table_.cell(row, *table_.column(kPeriod)));
    if (!period) return error(row, kPeriod, "this must be 60, 24, 07 or 99");
    Trade& trade = trades_[found->second];
    if (const auto earlier = trade.rows.at(*period)) {
      return error(row, kId,
                   fmt::format("line {} has the same id and period", table_.line(*earlier)));
    }
    trade.rows.at(*period) = row;
    const bool is_all_time = *period == kPeriod99;
    read_figures(row, is_all_time,
                 is_all_time ? trade.all_time : edit_.values[std::to_string(*id)].at(*period));
    for (const Cell& cell : cells_) {
      if (!is_all_time) edit_.given.at(*period).at(cell.figure->field) = true;
    }
  }

  void read_figures(std::size_t row, bool is_all_time, PeriodBlock& block) {
    for (const Cell& cell : cells_) {
      const auto number = table_.number(row, cell.column);
      if (!number) continue;
      *figure_at(block, cell.figure->field) = *number;
      // Histories have no place for further values.
      if (is_all_time && cell.figure->field >= kFirstFurther && *number != 0) {
        table_.error(row, cell.column, "this must be 0 in period 99");
      }
    }
  }

  void add_recent(const Trade& trade,
                  const std::unordered_map<std::string, RecentPeriods>& stored) {
    const std::string id = std::to_string(trade.record->trade_id);
    if (trade.rows[kPeriod60] || trade.rows[kPeriod24] || trade.rows[kPeriod07]) {
      edit_.listed.push_back(id);
    }
    const auto found = stored.find(id);
    for (std::size_t period = 0; period < kRecentPeriods; ++period) {
      PeriodBlock before = found == stored.end() ? PeriodBlock{} : found->second.at(period);
      for (const Cell& cell : cells_) {
        if (!edit_.given.at(period).at(cell.figure->field)) continue;
        note(cell, period, before, edit_.values[id].at(period));
      }
    }
  }

  Expected<void> add_history(const Trade& trade, std::size_t row) {
    const std::string_view domain = domain_of(*trade.record);
    if (trade.shares_id) {
      error(row, kId,
            "two trades of different domains have this id, so it does not name a history");
      return {};
    }
    if (contains(domain, "/")) {
      error(row, kId, "the domain of this trade contains a \"/\", so it cannot name a history");
      return {};
    }
    const auto before = histories_(domain);
    if (!before) return tl::unexpected(before.error());
    PeriodBlock totals = before->value_or(PeriodBlock{});
    PeriodBlock given = trade.all_time;
    for (const Cell& cell : cells_) {
      note(cell, kPeriod99, totals, given);
      *figure_at(totals, cell.figure->field) = *figure_at(given, cell.figure->field);
    }
    const auto [earlier, is_new] = domains_.emplace(domain, History{row, totals});
    if (!is_new && !same_counters(earlier->second.totals, totals)) {
      error(row, kId,
            fmt::format("line {} has the same domain and other figures. Trades of one domain share "
                        "their history",
                        table_.line(earlier->second.row)));
    }
    if (is_new && !(*before && same_counters(**before, totals))) {
      result_.histories.emplace_back(domain, totals);
    }
    return {};
  }

  void note(const Cell& cell, std::size_t period, PeriodBlock before, PeriodBlock after) {
    const std::int32_t old_figure = *figure_at(before, cell.figure->field);
    const std::int32_t new_figure = *figure_at(after, cell.figure->field);
    if (old_figure == new_figure) return;
    change_.values.push_back({fmt::format("{}{}", cell.figure->name, kPeriodNames.at(period)),
                              std::to_string(old_figure), std::to_string(new_figure)});
  }

  void error(std::size_t row, std::string_view column, std::string_view message) {
    table_.error(row, *table_.column(column), message);
  }

  struct History {
    std::size_t row;  ///< of the CSV
    PeriodBlock totals;
  };

  const CsvTable& table_;
  const Histories& histories_;
  std::vector<Cell> cells_;
  std::vector<Trade> trades_;
  std::unordered_map<std::int32_t, std::size_t> by_id_;
  std::unordered_map<std::string_view, History> domains_;
  SumEdit edit_;
  TradeChange change_;
  ImportedFigures result_;
};

}  // namespace

Expected<std::optional<PeriodBlock>> read_history(std::string_view domain) {
  return read_file_if_there(history_path(domain))
      .map([](const std::optional<std::string>& text) -> std::optional<PeriodBlock> {
        if (!text) return std::nullopt;
        PeriodBlock totals;
        add_history(*text, totals);
        return totals;
      });
}

Expected<std::string> export_figures(std::span<const TradeRecord> trades, std::string_view sum,
                                     const Histories& histories) {
  SumEdit every_trade;
  for (const TradeRecord& trade : trades) {
    every_trade.values.try_emplace(std::to_string(trade.trade_id));
  }
  const auto stored = stored_figures(sum, every_trade);

  CsvText csv;
  csv.add(kId);
  csv.add(kPeriod);
  for (const Figure& figure : kFigures) csv.add(figure.name);
  csv.end_row();
  for (const TradeRecord& trade : trades) {
    const auto own = stored.find(std::to_string(trade.trade_id));
    for (std::size_t i = 0; own != stored.end() && i < kRecentPeriods; ++i) {
      append_row(csv, trade, i, own->second.at(i));
    }
    const auto totals = histories(domain_of(trade));
    if (!totals) return tl::unexpected(totals.error());
    if (*totals) append_row(csv, trade, kPeriod99, **totals);
  }
  return csv.text();
}

Expected<ImportedFigures> import_figures(std::string_view csv, std::span<const TradeRecord> trades,
                                         std::string_view sum, const Histories& histories,
                                         Diagnostics& errors) {
  CsvTable table(csv, errors);
  table.check_header(is_column, std::array{kId, kPeriod});
  if (!table.column(kId) || !table.column(kPeriod)) return ImportedFigures{};
  return FiguresImporter(table, trades, histories).import(sum);
}

}  // namespace toplist::ctl
