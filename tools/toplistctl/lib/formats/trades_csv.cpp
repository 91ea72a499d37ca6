#include "toplistctl/lib/formats/trades_csv.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <deque>
#include <optional>
#include <unordered_map>
#include <utility>

#include "toplistctl/lib/formats/columns_file.h"
#include "toplistctl/lib/formats/csv.h"
#include "toplistctl/lib/output/value.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kId = "id";
constexpr std::string_view kDomain = "domain";
constexpr std::string_view kUrl = "url";
constexpr std::string_view kStatus = "status";
constexpr std::array kRecordColumns{kId, kDomain, kUrl, kStatus};

// --- what a text must not hold ---

struct Unfit {
  std::string_view part;
  const char* message;
};
/// The first four are for all texts, the last one is for domains.
constexpr std::array<Unfit, 5> kUnfit{{
    {"%%"sv, "must not contain \"%%\", which starts a tag"},
    {"\n"sv, "must not contain a line break"},
    {"\0"sv, "must not contain a NUL byte"},
    {"|"sv, "must not contain \"|\", which separates fields"},
    {"/"sv, "must not contain \"/\", because the domain names files"},
}};
constexpr std::size_t kTextUnfit = 4;

constexpr const char* kNotUtf8 =
    "this is not UTF-8. Convert the file: iconv -f WINDOWS-1252 -t UTF-8";
constexpr const char* kMarkup =
    "this contains HTML. Use --escape to show it as text, or --raw to keep it";

bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// Whether a browser would take a "<" in the text for a tag, a comment or the like.
bool holds_markup(std::string_view text) {
  for (std::size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at + 1)) {
    const char next = at + 1 < text.size() ? text[at + 1] : ' ';
    if (is_letter(next) || next == '/' || next == '!' || next == '?') return true;
  }
  return false;
}

/// Entities without their ";", which browsers take as well: in an extra column ";" separates
/// alternatives.
std::string escaped(std::string_view text) {
  std::string result(text);
  constexpr std::pair<const char*, const char*> kEntities[] = {
      {"&", "&amp"}, {"<", "&lt"}, {">", "&gt"}, {"\"", "&quot"}};
  for (const auto& [plain, entity] : kEntities) replace_all(result, plain, entity);
  return result;
}

/// nullptr when a file can hold the text; `unfit` says how many of kUnfit count.
const char* find_fault(std::string_view text, std::size_t unfit, Markup markup) {
  for (const Unfit& one : std::span(kUnfit).first(unfit)) {
    if (contains(text, one.part)) return one.message;
  }
  if (markup == Markup::raw) return nullptr;
  if (as_utf8(text) != text) return kNotUtf8;
  return holds_markup(text) ? kMarkup : nullptr;
}

// --- the texts of a record ---

struct TextField {
  std::string_view name;
  std::size_t offset;
  std::size_t size;  ///< with the NUL at its end
  std::string_view (*read)(const TradeRecord&);
  std::size_t unfit;  ///< how many of kUnfit count
};
constexpr std::array<TextField, 2> kTextFields{{
    {kDomain, offsetof(TradeRecord, domain), sizeof(TradeRecord::domain), domain_of, 5},
    {kUrl, offsetof(TradeRecord, url), sizeof(TradeRecord::url), url_of, 4},
}};

void set_text(TradeRecord& record, const TextField& field, std::string_view text) {
  char* const bytes = reinterpret_cast<char*>(&record) + field.offset;
  std::fill_n(bytes, field.size, '\0');
  text.copy(bytes, field.size - 1);
}

/// A record of no trade, as add_fillers() makes it.
bool is_filler(const TradeRecord& record) {
  const TradeRecord filler{.trade_id = record.trade_id};
  return record.trade_id < 0 && std::memcmp(&record, &filler, sizeof filler) == 0;
}

class TradesImporter {
 public:
  TradesImporter(const CsvTable& table, std::span<const TradeRecord> trades,
                 std::string_view columns, const TradesImport& how)
      : table_(table), before_(trades), file_(columns), how_(how) {
    for (std::size_t i = 0; i < table.header().size(); ++i) {
      if (const auto index = column_index(table.header()[i])) text_cells_.emplace_back(i, *index);
    }
  }

  ImportedTrades import() {
    number_rows();
    keep_records();
    for (const auto& [row, index] : in_order_) add_row(row, index);
    result_.changes.insert(result_.changes.end(), removed_.begin(), removed_.end());
    add_fillers();
    result_.columns = file_.with(columns_, new_columns(), how_.left_domain);
    return std::move(result_);
  }

 private:
  /// Notes the row of each id.
  void number_rows() {
    for (std::size_t row = 0; row < table_.rows(); ++row) {
      const auto id = table_.number(row, *table_.column(kId));
      if (!id) continue;
      const auto [entry, is_new] = rows_.emplace(*id, row);
      if (is_new) {
        in_order_.emplace_back(row, kNew);
      } else {
        error(row, kId, fmt::format("line {} has the same id", table_.line(entry->second)));
      }
    }
  }

  /// Copies the records that stay.
  void keep_records() {
    // Room for all, so that views of domains stay good.
    result_.trades.reserve(before_.size() + table_.rows() + kFewestTrades);
    std::unordered_map<std::size_t, std::size_t> kept;  // position by row
    for (const TradeRecord& record : before_) {
      const auto row = rows_.find(record.trade_id);
      if (row != rows_.end()) {
        kept.emplace(row->second, result_.trades.size());  // the first one of an id
      } else if (is_filler(record)) {
        continue;
      } else if (how_.remove_missing) {
        removed_.push_back(
            {TradeChange::What::removed, record.trade_id, std::string(domain_of(record))});
        continue;
      } else {
        ++result_.unchanged;
      }
      result_.trades.push_back(record);
    }
    for (auto& [row, index] : in_order_) {
      if (const auto found = kept.find(row); found != kept.end()) index = found->second;
    }
  }

  void add_row(std::size_t row, std::size_t index) {
    const bool is_new = index == kNew;
    if (is_new) {
      index = result_.trades.size();
      result_.trades.push_back({.trade_id = *table_.number(row, *table_.column(kId))});
    }
    TradeRecord& record = result_.trades[index];
    const TradeRecord before = record;
    change_ = {is_new ? TradeChange::What::added : TradeChange::What::changed, record.trade_id,
               std::string(domain_of(before))};
    const bool is_sound = set_texts(record, before, row);
    set_status(record, row);
    const std::string_view domain = domain_of(record);
    if (is_sound && is_active(record) && domain.empty()) {
      error(row, kDomain, "an active trade needs a domain");
    }
    set_columns(row, domain, file_.of(is_new ? domain : domain_of(before)));
    if (is_new) change_.domain = domain;
    if (is_new || !change_.values.empty()) {
      result_.changes.push_back(std::move(change_));
    } else {
      ++result_.unchanged;
    }
  }

  /// False when a text cannot be set.
  bool set_texts(TradeRecord& record, const TradeRecord& before, std::size_t row) {
    std::array<std::string_view, kTextFields.size()> wanted;
    std::array<std::string, kTextFields.size()> faults;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      const TextField& field = kTextFields.at(i);
      const auto column = table_.column(field.name);
      wanted[i] = column ? table_.cell(row, *column) : field.read(before);
      if (field.read(record) == wanted[i]) continue;
      const char* const fault = find_fault(wanted[i], field.unfit, how_.markup);
      faults[i] = fault != nullptr ? fault : "";
      if (faults[i].empty()) set_text(record, field, wanted[i]);
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      // A stored text without a NUL goes on with the bytes after its field.
      const TextField& field = kTextFields.at(i);
      if (faults[i].empty() && field.read(record) != wanted[i]) {
        faults[i] = fmt::format("this is longer than {} bytes", field.size - 1);
      }
      if (!faults[i].empty()) error(row, field.name, faults[i]);
      if (field.read(before) != wanted[i]) {
        note(field.name, in_quotes(field.read(before)), in_quotes(wanted[i]));
      }
    }
    return faults[0].empty();
  }

  void set_status(TradeRecord& record, std::size_t row) {
    const auto column = table_.column(kStatus);
    const auto status = column ? table_.number(row, *column) : std::nullopt;
    if (!status || *status == record.status) return;
    note(kStatus, std::to_string(record.status), std::to_string(*status));
    record.status = *status;
  }

  /// Notes the extra columns of a row's domain, which has `columns` as long as nothing is given.
  void set_columns(std::size_t row, std::string_view domain, Columns columns) {
    for (const auto& [cell, index] : text_cells_) {
      std::string_view text = table_.cell(row, cell);
      const std::string_view before = index < columns.size() ? columns[index] : "";
      if (text == before) continue;
      if (how_.markup == Markup::escape) {
        text = escaped_.emplace_back(escaped(text));
        if (text == before) continue;
      }
      const char* const fault = find_fault(text, kTextUnfit, how_.markup);
      if (fault != nullptr) table_.error(row, cell, fault);
      note(column_name(index), in_quotes(before), in_quotes(text));
      columns.resize(std::max(columns.size(), index + 1));
      columns[index] = text;
    }
    const auto [entry, is_new] = domains_.emplace(domain, DomainUse{columns_.size(), row});
    if (is_new) {
      columns_.emplace_back(domain, std::move(columns));
    } else if (!same_columns(columns_[entry->second.index].second, columns)) {
      error(row, kDomain,
            fmt::format("line {} has the same domain and other texts. Trades of one domain share "
                        "their texts",
                        table_.line(entry->second.row)));
    }
  }

  /// Columns of a file that has none yet: those of the CSV, up to the last.
  [[nodiscard]] std::size_t new_columns() const {
    std::size_t count = text_cells_.empty() ? kUsualColumns : 0;
    for (const auto& [cell, index] : text_cells_) count = std::max(count, index + 1);
    return count;
  }

  /// Their ids are below zero, where no trade's are.
  void add_fillers() {
    for (std::int32_t id = -1; result_.trades.size() < kFewestTrades; --id) {
      const bool is_taken =
          std::any_of(result_.trades.begin(), result_.trades.end(),
                      [id](const TradeRecord& record) { return record.trade_id == id; });
      if (is_taken) continue;
      result_.trades.push_back({.trade_id = id});
      ++result_.fillers;
    }
  }

  void note(std::string_view name, std::string before, std::string after) {
    change_.values.push_back({std::string(name), std::move(before), std::move(after)});
  }

  void error(std::size_t row, std::string_view column, std::string_view message) {
    table_.error(row, table_.column(column).value_or(*table_.column(kId)), message);
  }

  struct DomainUse {
    std::size_t index;  ///< in `columns_`
    std::size_t row;
  };
  static constexpr std::size_t kNew = static_cast<std::size_t>(-1);

  const CsvTable& table_;
  std::span<const TradeRecord> before_;
  ColumnsFile file_;
  const TradesImport& how_;
  std::vector<std::pair<std::size_t, std::size_t>> text_cells_;  ///< of the CSV, extra column
  std::unordered_map<std::int32_t, std::size_t> rows_;           ///< by id
  std::vector<std::pair<std::size_t, std::size_t>> in_order_;    ///< row, record or kNew
  std::vector<TradeChange> removed_;
  std::unordered_map<std::string_view, DomainUse> domains_;
  std::vector<DomainColumns> columns_;
  std::deque<std::string> escaped_;  ///< owns what `columns_` views
  TradeChange change_;
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
                             std::string_view columns, Diagnostics& errors,
                             const TradesImport& how) {
  CsvTable table(csv, errors);
  table.check_header(is_column, std::array{kId});
  if (!table.column(kId)) return {};
  return TradesImporter(table, trades, columns, how).import();
}

}  // namespace toplist::ctl
