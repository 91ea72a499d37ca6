#include "toplistctl/lib/formats/trades_csv.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <unordered_map>
#include <utility>

#include "toplistctl/lib/formats/columns_file.h"
#include "toplistctl/lib/formats/csv.h"
#include "toplistctl/lib/formats/csv_table.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kId = "id";
constexpr std::string_view kDomain = "domain";
constexpr std::string_view kUrl = "url";
constexpr std::string_view kStatus = "status";
constexpr std::array kRecordColumns{kId, kDomain, kUrl, kStatus};

/// What a text must not hold: the files have no way to write it.
struct Unfit {
  std::string_view part;
  const char* what;
};
constexpr std::array<Unfit, 4> kUnfit{{
    {"|"sv, "must not hold a \"|\", which separates fields"},
    {"\n"sv, "must not hold a line break"},
    {"\0"sv, "must not hold a NUL byte"},
    {"/"sv, "must not hold a \"/\", as it names files"},
}};
/// How many of them count for an extra column.
constexpr std::size_t kColumnUnfit = 2;

/// nullptr when the text holds none of the first `count`.
const char* find_unfit(std::string_view text, std::size_t count) {
  for (const Unfit& unfit : std::span(kUnfit).first(count)) {
    if (contains(text, unfit.part)) return unfit.what;
  }
  return nullptr;
}

/// A text of a record.
struct TextField {
  std::string_view name;
  std::size_t offset;
  std::size_t size;  ///< with the NUL at its end
  std::string_view (*read)(const TradeRecord&);
  std::size_t unfit;  ///< how many of kUnfit count
};
constexpr std::array<TextField, 2> kTextFields{{
    {kDomain, offsetof(TradeRecord, domain), sizeof(TradeRecord::domain), domain_of, 4},
    {kUrl, offsetof(TradeRecord, url), sizeof(TradeRecord::url), url_of, 3},
}};

std::string too_long(const TextField& field) {
  return "is longer than " + std::to_string(field.size - 1) + " bytes";
}

/// Puts the text into its field, and NUL behind it; empty, or why that is not possible.
std::string set_text(TradeRecord& record, const TextField& field, std::string_view text) {
  if (text.size() >= field.size) return too_long(field);
  if (const char* unfit = find_unfit(text, field.unfit)) return unfit;
  char* const bytes = reinterpret_cast<char*>(&record) + field.offset;
  std::fill_n(bytes, field.size, '\0');
  text.copy(bytes, text.size());
  return {};
}

class TradesImporter {
 public:
  TradesImporter(const CsvTable& table, std::span<const TradeRecord> trades,
                 std::string_view columns, CsvErrors& errors)
      : table_(table), file_(columns), errors_(errors) {
    for (const TradeRecord& trade : trades) before_.emplace(trade.trade_id, &trade);
    for (std::size_t i = 0; i < table.header().size(); ++i) {
      if (const auto index = column_index(table.header()[i])) text_cells_.emplace_back(i, *index);
    }
  }

  ImportedTrades import() {
    result_.trades.reserve(table_.rows() + kFewestTrades);  // so that views of domains stay good
    for (std::size_t row = 0; row < table_.rows(); ++row) add_row(row);
    result_.removed = before_.size() - (rows_.size() - result_.added);
    add_fillers();
    result_.columns = file_.with(columns_, new_columns());
    return std::move(result_);
  }

 private:
  void add_row(std::size_t row) {
    const auto id = table_.number(row, *table_.column(kId), errors_);
    if (!id || !note_id(*id, row)) return;
    const auto found = before_.find(*id);
    const TradeRecord fresh{.trade_id = *id};
    const TradeRecord& before = found == before_.end() ? fresh : *found->second;
    if (&before == &fresh) ++result_.added;

    TradeRecord& record = result_.trades.emplace_back(before);
    set_texts(record, before, row);
    set_status(record, row);
    const std::string_view domain = domain_of(record);
    if (is_active(record) && domain.empty()) error(row, kDomain, "an active trade needs a domain");
    set_columns(row, domain, file_.of(&before == &fresh ? domain : domain_of(before)));
  }

  /// Columns of a file that has none yet: those of the CSV, up to the last.
  [[nodiscard]] std::size_t new_columns() const {
    std::size_t count = text_cells_.empty() ? kUsualColumns : 0;
    for (const auto& [cell, index] : text_cells_) count = std::max(count, index + 1);
    return count;
  }

  bool note_id(std::int32_t id, std::size_t row) {
    const auto [entry, is_new] = rows_.emplace(id, row);
    if (!is_new) error(row, kId, "is that of line " + std::to_string(table_.line(entry->second)));
    return is_new;
  }

  void set_texts(TradeRecord& record, const TradeRecord& before, std::size_t row) {
    std::array<std::string_view, kTextFields.size()> wanted;
    std::array<std::string, kTextFields.size()> faults;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      const TextField& field = kTextFields.at(i);
      const auto column = table_.column(field.name);
      wanted[i] = column ? table_.cell(row, *column) : field.read(before);
      if (field.read(record) != wanted[i]) faults[i] = set_text(record, field, wanted[i]);
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      // A stored text without a NUL goes on with the bytes behind its field.
      const TextField& field = kTextFields.at(i);
      if (faults[i].empty() && field.read(record) != wanted[i]) faults[i] = too_long(field);
      if (!faults[i].empty()) error(row, field.name, faults[i]);
    }
  }

  void set_status(TradeRecord& record, std::size_t row) {
    const auto column = table_.column(kStatus);
    if (!column) return;
    if (const auto status = table_.number(row, *column, errors_)) record.status = *status;
  }

  /// Notes the extra columns of a row's domain, which has `columns` as long as nothing is given.
  void set_columns(std::size_t row, std::string_view domain, Columns columns) {
    for (const auto& [cell, index] : text_cells_) {
      const std::string_view text = table_.cell(row, cell);
      if (text == (index < columns.size() ? columns[index] : "")) continue;
      if (const char* unfit = find_unfit(text, kColumnUnfit)) {
        errors_.add(table_.place(row, cell), unfit);
      }
      columns.resize(std::max(columns.size(), index + 1));
      columns[index] = text;
    }
    const auto [entry, is_new] = domains_.emplace(domain, DomainUse{columns_.size(), row});
    if (is_new) {
      columns_.emplace_back(domain, std::move(columns));
    } else if (!same_columns(columns_[entry->second.index].second, columns)) {
      error(row, kDomain,
            "is that of line " + std::to_string(table_.line(entry->second.row)) +
                ", where the texts differ: they go by the domain");
    }
  }

  /// Their ids are below zero, where no trade's are.
  void add_fillers() {
    for (std::int32_t id = -1; result_.trades.size() < kFewestTrades; --id) {
      if (rows_.contains(id)) continue;
      result_.trades.push_back({.trade_id = id});
      ++result_.fillers;
      if (before_.contains(id)) --result_.removed;
    }
  }

  void error(std::size_t row, std::string_view column, std::string_view what) {
    errors_.add(table_.place(row, table_.column(column).value_or(*table_.column(kId))), what);
  }

  struct DomainUse {
    std::size_t index;  ///< in `columns_`
    std::size_t row;
  };

  const CsvTable& table_;
  ColumnsFile file_;
  CsvErrors& errors_;
  std::unordered_map<std::int32_t, const TradeRecord*> before_;
  std::vector<std::pair<std::size_t, std::size_t>> text_cells_;  ///< of the CSV, extra column
  std::unordered_map<std::int32_t, std::size_t> rows_;           ///< by id
  std::unordered_map<std::string_view, DomainUse> domains_;
  std::vector<DomainColumns> columns_;
  ImportedTrades result_;
};

bool is_column(std::string_view name) {
  return std::find(kRecordColumns.begin(), kRecordColumns.end(), name) != kRecordColumns.end() ||
         column_index(name);
}

}  // namespace

std::string export_trades(std::span<const TradeRecord> trades, std::string_view columns) {
  const ColumnsFile file(columns);
  const std::size_t width = std::min(file.width(), kNamedColumns);
  CsvText csv;
  for (const std::string_view name : kRecordColumns) csv.add(name);
  for (std::size_t i = 0; i < width; ++i) csv.add(column_name(i));
  csv.end_row();
  for (const TradeRecord& trade : trades) {
    csv.add(trade.trade_id);
    csv.add(domain_of(trade));
    csv.add(url_of(trade));
    csv.add(trade.status);
    const Columns& values = file.of(domain_of(trade));
    for (std::size_t i = 0; i < width; ++i) csv.add(i < values.size() ? values[i] : "");
    csv.end_row();
  }
  return csv.text();
}

ImportedTrades import_trades(std::string_view csv, std::span<const TradeRecord> trades,
                             std::string_view columns, CsvErrors& errors) {
  const CsvTable table(csv, errors);
  table.check_header(is_column, std::array{kId}, errors);
  if (!table.column(kId)) return {};
  return TradesImporter(table, trades, columns, errors).import();
}

}  // namespace toplist::ctl
