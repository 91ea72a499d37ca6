#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <set>
#include <span>
#include <string>
#include <utility>

#include "render/tag.h"
#include "run/statistics.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/commands/check/records.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "util/fields.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

/// Reports where the fields do not come in records of `size`; true when they do.
bool check_fields(const Kind& kind, const SiteFile& file, std::size_t size, Diagnostics& findings) {
  const auto misfit = find_misfit(file.text(), size);
  if (!misfit) return true;
  findings.push_back({&kind,
                      {.file = file.path(), .line = misfit->line},
                      "the line has " + std::to_string(misfit->fields) + " of " +
                          std::to_string(size) + " fields"});
  return false;
}

/// The numbers of all trades as "d/t/sum" is to spell them.
std::set<std::string> ids_of(const std::vector<TradeRecord>& trades) {
  std::set<std::string> ids;
  for (const TradeRecord& trade : trades) ids.insert(std::to_string(trade.trade_id));
  return ids;
}

/// The records of "d/t/sum" by the trade's number, a view of its text: the first one of each.
using SumRecords = std::map<std::string_view, std::size_t>;

SumRecords check_sum_ids(std::string_view text, const SiteView& site, Diagnostics& findings) {
  const std::set<std::string> known = ids_of(site.run.trades);
  SumRecords records;
  FieldReader fields(text);
  std::array<std::string_view, kSumFields> record;
  for (std::size_t number = 1; next_record(fields, record) == record.size(); ++number) {
    const std::string id(record[1]);
    const auto [first, is_new] = records.emplace(record[1], number);
    if (!is_new) {
      findings.push_back(
          {&kinds::kDuplicateSumId,
           {.file = kSumPath, .record = number},
           "number " + in_quotes(id) + " also has record " + std::to_string(first->second)});
    } else if (!known.contains(id)) {
      findings.push_back({&kinds::kUnknownSumId,
                          {.file = kSumPath, .record = number},
                          "number " + in_quotes(id) + " is no trade's"});
    }
  }
  return records;
}

std::string name_of(const TradeRow& row) { return row.domain + " (number " + row.id + ")"; }

/// Columns that partners write: title, description and picture. The others are the site's own.
constexpr std::size_t kPartnersColumns = 3;

/// Finds faults of one line of "d/tl/tl.a1" after the other.
class ColumnCheck {
 public:
  ColumnCheck(std::string_view text, Diagnostics& findings) : text_(text), findings_(findings) {}

  /// The fields of the line: a domain and its values, views into the text.
  void check(std::span<const std::string_view> fields) {
    count_lines(fields[0]);
    const std::string domain = in_quotes(fields[0]);
    const auto [first, is_new] = lines_.emplace(fields[0], line_);
    if (!is_new) {
      add(kinds::kDuplicateColumns, domain + " also has line " + std::to_string(first->second));
    }
    for (std::size_t i = 1; i < fields.size(); ++i) {
      const std::string value = in_quotes(fields[i]) + " of " + domain;
      if (contains(fields[i], kTagMark)) add(kinds::kMarkInValue, value + " holds \"%%\"");
      if (i <= kPartnersColumns && holds_markup(fields[i])) {
        add(kinds::kMarkupInValue, value + " holds markup");
      }
    }
  }

 private:
  void add(const Kind& kind, std::string message) {
    findings_.push_back({&kind, {.file = kExtraColumnsPath, .line = line_}, std::move(message)});
  }

  /// Goes on to the line in which `field` stands.
  void count_lines(std::string_view field) {
    const auto at = text_.begin() + (field.data() - text_.data());
    line_ += static_cast<std::size_t>(std::count(counted_to_, at, kLineSeparator));
    counted_to_ = at;
  }

  std::string_view text_;
  Diagnostics& findings_;
  std::string_view::const_iterator counted_to_ = text_.begin();
  std::size_t line_ = 1;
  std::map<std::string_view, std::size_t> lines_;  ///< by domain, the first of each
};

void check_column_lines(std::string_view text, const ExtraColumnFields& fields,
                        Diagnostics& findings) {
  const std::size_t size = fields.group_size();
  const std::span<const std::string_view> kept(fields.kept);
  ColumnCheck check(text, findings);
  for (std::size_t at = *fields.kept_in_header; at + size <= kept.size(); at += size) {
    check.check(kept.subspan(at, size));
  }
}

void check_rows_have_columns(const SiteView& site, Diagnostics& findings) {
  for (const TradeRow& row : site.run.rows) {
    if (!row.extra_columns.empty()) continue;
    findings.push_back(
        {&kinds::kNoColumns, {.file = kExtraColumnsPath}, "no line for " + row.domain});
  }
}

}  // namespace

void check_columns(const SiteView& site, Diagnostics& findings) {
  const SiteFile file(kExtraColumnsPath);
  if (!check_open(file, findings)) return;
  const ExtraColumnFields fields = read_extra_column_fields(file.text());
  if (fields.group_size() == 0) {
    const std::string count = std::to_string(fields.kept_in_header.value_or(fields.kept.size()));
    findings.push_back({&kinds::kShortHeader,
                        {.file = kExtraColumnsPath, .line = 1},
                        fields.kept_in_header ? "the header has " + count + " of at least 3 fields"
                                              : "the file has no line behind its header"});
    return;
  }
  check_column_lines(file.text(), fields, findings);
  if (check_fields(kinds::kColumnFields, file, *fields.kept_in_header, findings)) {
    check_rows_have_columns(site, findings);
  }
}

void check_histories(const SiteView& site, Diagnostics& findings) {
  std::size_t lacking = 0;
  for (const TradeRow& row : site.run.rows) {
    const SiteFile history(history_path(row.domain));
    if (history.is_open()) {
      check_fields(kinds::kHistoryFields, history, kHistoryFields, findings);
    } else {
      ++lacking;
      findings.push_back(
          {&kinds::kMissingHistory, {.file = history.path()}, cannot_open(history.error())});
    }
  }
  check_none_has(kinds::kNoHistories,
                 std::filesystem::path(history_path("")).parent_path().string(), lacking, site,
                 findings);
}

void check_sum(const SiteView& site, Diagnostics& findings) {
  // Behind a line that does not fit, the numbers of trades are not what they seem.
  const SiteFile file(kSumPath);
  if (!check_open(file, findings) || !check_fields(kinds::kSumFields, file, kSumFields, findings)) {
    return;
  }
  if (site.run.trades.empty()) return;
  const SumRecords records = check_sum_ids(file.text(), site, findings);
  std::size_t lacking = 0;
  for (const TradeRow& row : site.run.rows) {
    if (records.contains(row.id)) continue;
    ++lacking;
    findings.push_back({&kinds::kNoSumRecord, {.file = kSumPath}, "no record of " + name_of(row)});
  }
  check_none_has(kinds::kNoFigures, kSumPath, lacking, site, findings);
}

}  // namespace toplist::ctl
