#include "toplistctl/lib/formats/figures_csv.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <unordered_map>

#include "toplistctl/lib/formats/csv.h"
#include "toplistctl/lib/formats/csv_table.h"
#include "toplistctl/lib/formats/order_names.h"
#include "toplistctl/lib/formats/sum_file.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

constexpr std::string_view kId = "id";
constexpr std::string_view kPeriod = "period";

constexpr std::string_view kBare07 = "7";  ///< what a spreadsheet makes of "07"
static_assert(kRecentPeriods == kPeriod99);

/// A figure's column in the CSV, and its field in a period of "d/t/sum".
struct FigureColumn {
  std::string_view name;
  std::size_t field;
};
constexpr std::array<FigureColumn, 11> kFigures{{
    {"rin", field_of(&PeriodBlock::rin)},
    {"uin", field_of(&PeriodBlock::uin)},
    {"out", field_of(&PeriodBlock::out)},
    {"clk", field_of(&PeriodBlock::clk)},
    {"cef", field_of(&PeriodBlock::cef)},
    {"ctt", field_of(&PeriodBlock::ctt)},
    {"ctg", field_of(&PeriodBlock::ctg)},
    {"rec", field_of(&PeriodBlock::rec)},
    {"further1", kFirstFurther},
    {"further2", kFirstFurther + 1},
    {"further3", kFirstFurther + 2},
}};

bool is_column(std::string_view name) {
  return name == kId || name == kPeriod ||
         std::any_of(kFigures.begin(), kFigures.end(),
                     [name](const FigureColumn& figure) { return figure.name == name; });
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
  for (const FigureColumn& figure : kFigures) csv.add(*figure_at(block, figure.field));
  csv.end_row();
}

class FiguresImporter {
 public:
  FiguresImporter(const CsvTable& table, std::span<const TradeRecord> trades,
                  const Histories& histories, CsvErrors& errors)
      : table_(table), histories_(histories), errors_(errors) {
    for (const FigureColumn& figure : kFigures) {
      if (const auto cell = table.column(figure.name)) cells_.push_back({*cell, figure.field});
    }
    trades_.reserve(trades.size());
    for (const TradeRecord& trade : trades) {
      by_id_.emplace(trade.trade_id, trades_.size());
      trades_.push_back({.record = &trade});
      edit_.values.try_emplace(std::to_string(trade.trade_id));
    }
  }

  ImportedFigures import(std::string_view sum) {
    for (std::size_t row = 0; row < table_.rows(); ++row) add_row(row);
    for (const Trade& trade : trades_) add_trade(trade);
    return {edited_sum(sum, edit_), std::move(changed_histories_)};
  }

 private:
  struct Cell {
    std::size_t column;  ///< of the CSV
    std::size_t field;   ///< of a period of "d/t/sum"
  };

  struct Trade {
    const TradeRecord* record;
    std::array<std::optional<std::size_t>, kPeriodCount> rows{};  ///< of the CSV, by period
    PeriodBlock all_time{};
  };

  void add_row(std::size_t row) {
    const auto id = table_.number(row, *table_.column(kId), errors_);
    if (!id) return;
    const auto found = by_id_.find(*id);
    if (found == by_id_.end()) return error(row, kId, "the trade database has no trade of this id");
    const auto period = find_period(table_.cell(row, *table_.column(kPeriod)));
    if (!period) return error(row, kPeriod, "60, 24, 07 or 99 must stand here");
    Trade& trade = trades_[found->second];
    if (const auto earlier = trade.rows.at(*period)) {
      return error(row, kId,
                   "has the same period in line " + std::to_string(table_.line(*earlier)));
    }
    trade.rows.at(*period) = row;
    if (*period == kPeriod99) {
      read_figures(row, trade.all_time);
      refuse_further(row, trade.all_time);
    } else {
      read_figures(row, edit_.values[std::to_string(*id)].at(*period));
      for (const Cell& cell : cells_) edit_.given.at(*period).at(cell.field) = true;
    }
  }

  void read_figures(std::size_t row, PeriodBlock& block) {
    for (const Cell& cell : cells_) {
      const auto number = table_.number(row, cell.column, errors_);
      if (number) *figure_at(block, cell.field) = *number;
    }
  }

  void add_trade(const Trade& trade) {
    if (trade.rows[kPeriod60] || trade.rows[kPeriod24] || trade.rows[kPeriod07]) {
      edit_.listed.push_back(std::to_string(trade.record->trade_id));
    }
    if (trade.rows[kPeriod99]) add_history(trade, *trade.rows[kPeriod99]);
  }

  void add_history(const Trade& trade, std::size_t row) {
    const std::string_view domain = domain_of(*trade.record);
    if (contains(domain, "/"))
      return error(row, kId, "has a \"/\" in its domain, which names a file");
    const auto before = histories_(domain);
    PeriodBlock totals = before.value_or(PeriodBlock{});
    PeriodBlock given = trade.all_time;
    for (const Cell& cell : cells_) *figure_at(totals, cell.field) = *figure_at(given, cell.field);
    const auto [earlier, is_new] = domains_.emplace(domain, History{row, totals});
    if (!is_new && !same_counters(earlier->second.totals, totals)) {
      error(row, kId,
            "has the domain of line " + std::to_string(table_.line(earlier->second.row)) +
                ", where the figures differ: a history goes by the domain");
    }
    if (is_new && !(before && same_counters(*before, totals))) {
      changed_histories_.emplace_back(domain, totals);
    }
  }

  /// Histories have no place for further values.
  void refuse_further(std::size_t row, PeriodBlock all_time) {
    for (const Cell& cell : cells_) {
      if (cell.field < kFirstFurther || *figure_at(all_time, cell.field) == 0) continue;
      errors_.add(table_.place(row, cell.column), "must be 0 in period 99");
    }
  }

  void error(std::size_t row, std::string_view column, std::string_view what) {
    errors_.add(table_.place(row, *table_.column(column)), what);
  }

  struct History {
    std::size_t row;  ///< of the CSV
    PeriodBlock totals;
  };

  const CsvTable& table_;
  const Histories& histories_;
  CsvErrors& errors_;
  std::vector<Cell> cells_;
  std::vector<Trade> trades_;
  std::unordered_map<std::int32_t, std::size_t> by_id_;
  std::unordered_map<std::string_view, History> domains_;
  SumEdit edit_;
  std::vector<std::pair<std::string, PeriodBlock>> changed_histories_;
};

}  // namespace

std::string export_figures(std::span<const TradeRecord> trades, std::string_view sum,
                           const Histories& histories) {
  struct Recent {
    RecentPeriods periods{};
    bool is_there = false;
  };
  std::unordered_map<std::string, Recent> recent;
  for (const TradeRecord& trade : trades) recent.try_emplace(std::to_string(trade.trade_id));
  read_sum(sum, [&recent](std::string_view id) -> RecentPeriods* {
    const auto found = recent.find(std::string(id));
    if (found == recent.end()) return nullptr;
    found->second.is_there = true;
    return &found->second.periods;
  });

  CsvText csv;
  csv.add(kId);
  csv.add(kPeriod);
  for (const FigureColumn& figure : kFigures) csv.add(figure.name);
  csv.end_row();
  for (const TradeRecord& trade : trades) {
    const Recent& own = recent[std::to_string(trade.trade_id)];
    for (std::size_t i = 0; own.is_there && i < kRecentPeriods; ++i) {
      append_row(csv, trade, i, own.periods.at(i));
    }
    if (const auto totals = histories(domain_of(trade))) append_row(csv, trade, kPeriod99, *totals);
  }
  return csv.text();
}

ImportedFigures import_figures(std::string_view csv, std::span<const TradeRecord> trades,
                               std::string_view sum, const Histories& histories,
                               CsvErrors& errors) {
  const CsvTable table(csv, errors);
  table.check_header(is_column, std::array{kId, kPeriod}, errors);
  if (!table.column(kId) || !table.column(kPeriod)) return {};
  return FiguresImporter(table, trades, histories, errors).import(sum);
}

}  // namespace toplist::ctl
