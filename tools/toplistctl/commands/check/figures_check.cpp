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
#include "toplistctl/lib/diagnostics/kinds.h"
#include "util/fields.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

// --- figures ---

/// What is wrong with a figure, if anything; an empty one counts as 0.
std::string_view figure_fault(std::string_view field) {
  if (field.empty()) return {};
  const auto number = whole_number(field);
  if (!number) return "is not a whole number";
  if (*number < 0) return "is negative";
  return *number > INT32_MAX ? "is above 2147483647" : "";
}

/// Reports the first bad one of the eight counters of a period.
bool check_counters(std::span<const std::string_view> counters, Period period, const Place& place,
                    Diagnostics& findings) {
  for (std::size_t i = 0; i < kFileOrder.size(); ++i) {
    const std::string_view fault = figure_fault(counters[i]);
    if (fault.empty()) continue;
    add(findings, kinds::kBadFigure, place, "{} of period {}, \"{}\", {}",
        counter_name(kFileOrder[i]), kPeriodNames[period], counters[i], fault);
    return false;
  }
  return true;
}

/// rin counts each visit, and uin each visitor once. So uin is almost never higher than rin.
void check_shifted(const SiteView& site, Period period, const std::string& file,
                   Diagnostics& findings) {
  constexpr std::size_t kFewest = 3;
  std::size_t with_figures = 0, shifted = 0;
  for (const TradeRow& row : site.run.rows) {
    const PeriodBlock& block = row.periods[period];
    if (block.rin != 0 || block.uin != 0) ++with_figures;
    if (block.uin > block.rin) ++shifted;
  }
  if (shifted < kFewest || shifted * 4 <= with_figures * 3) return;
  add(findings, kinds::kShiftedColumns, {.file = file},
      "in period {} uin is above rin for {} of {} trades", kPeriodNames[period], grouped(shifted),
      grouped(with_figures));
}

constexpr std::size_t kPeriodFields = (kSumFields - 2) / kPeriod99;

/// Checks the records of "d/t/sum" and returns the trades' numbers in them.
std::set<std::string> check_sum_records(std::string_view text, const SiteView& site,
                                        Diagnostics& findings) {
  std::set<std::string> known;
  for (const TradeRecord& trade : site.run.trades) known.insert(std::to_string(trade.trade_id));
  std::map<std::string_view, std::size_t> records;  // the first one of each number
  FieldReader fields(text);
  std::array<std::string_view, kSumFields> record;
  for (std::size_t number = 1; next_record(fields, record) == record.size(); ++number) {
    const Place place{.file = kSumPath, .record = number};
    const auto [first, is_new] = records.emplace(record[1], number);
    if (!is_new) {
      add(findings, kinds::kDuplicateSumId, place, "record {} has the same number, \"{}\"",
          first->second, record[1]);
    } else if (!known.contains(std::string(record[1]))) {
      add(findings, kinds::kUnknownSumId, place, "no trade has the number \"{}\"", record[1]);
    }
    for (std::size_t period = 0; period < kPeriod99; ++period) {
      const auto counters = std::span(record).subspan(2 + period * kPeriodFields);
      if (!check_counters(counters, static_cast<Period>(period), place, findings)) break;
    }
  }
  std::set<std::string> ids;
  for (const auto& [id, number] : records) ids.emplace(id);
  return ids;
}

void check_history(const std::string& path, std::string_view text, Diagnostics& findings) {
  if (!check_fields(kinds::kHistoryFields, path, text, kHistoryFields, findings)) return;
  FieldReader fields(text);
  std::array<std::string_view, kHistoryFields> record;
  for (std::size_t number = 1; next_record(fields, record) == record.size(); ++number) {
    const Place place{.file = path, .record = number};
    if (!check_counters(std::span(record).subspan(2), kPeriod99, place, findings)) return;
  }
}

/// The part of a domain that most likely stays when the trade moves to another one: the longest
/// label, the last one left out.
std::string_view main_label(std::string_view domain) {
  std::string_view longest;
  domain = domain.substr(0, domain.rfind('.'));
  FieldReader labels(domain, '.');
  for (std::string_view label; labels.next(label);) {
    if (label.size() >= longest.size()) longest = label;  // not the "www" of "www.abc.org"
  }
  return longest;
}

/// Reports histories that are missing, those of renamed trades as such.
class MissingHistories {
 public:
  MissingHistories(const SiteView& site, Diagnostics& findings) : findings_(findings) {
    const std::filesystem::path any = history_path("");
    suffix_ = any.filename().string();
    folder_ = any.parent_path().string();
    unused_ = files_in(folder_ + "/", suffix_);
    std::set<std::string> used;
    for (const TradeRecord& trade : site.run.trades) {
      used.insert(history_path(domain_of(trade)));
    }
    std::erase_if(unused_, [&used](const std::string& path) { return used.contains(path); });
  }

  void report(const std::vector<const TradeRow*>& missing) {
    for (const TradeRow* row : missing) {
      const std::string path = history_path(row->domain);
      const std::string* const old = old_history(row->domain, missing.size() == 1);
      if (old == nullptr) {
        add(findings_, kinds::kMissingHistory, {.file = path}, "there is no such file");
      } else {
        add(findings_, kinds::kRenamedHistory, {.file = path},
            "there is no such file. One belongs to no trade: mv {} {}", *old, path);
      }
    }
  }

  [[nodiscard]] const std::string& folder() const { return folder_; }

 private:
  [[nodiscard]] const std::string* old_history(std::string_view domain, bool is_only_one) const {
    if (is_only_one && unused_.size() == 1) return &unused_.front();
    const auto found = std::find_if(unused_.begin(), unused_.end(), [&](std::string_view path) {
      path.remove_prefix(folder_.size() + 1);
      path.remove_suffix(suffix_.size());
      return main_label(path) == main_label(domain);
    });
    return found == unused_.end() ? nullptr : &*found;
  }

  Diagnostics& findings_;
  std::string folder_, suffix_;
  std::vector<std::string> unused_;
};

// --- columns ---

/// Columns that partners write: title, description and picture. The others are the site's own.
constexpr std::size_t kPartnersColumns = 3;

/// Checks "d/tl/tl.a1" line by line.
class ColumnCheck {
 public:
  ColumnCheck(std::string_view text, Diagnostics& findings) : text_(text), findings_(findings) {}

  /// The fields of the line: a domain and its values, views into the text.
  void check(std::span<const std::string_view> fields) {
    count_lines(fields[0]);
    const Place place{.file = kExtraColumnsPath, .line = line_};
    const auto [first, is_new] = lines_.emplace(fields[0], line_);
    if (!is_new) {
      add(findings_, kinds::kDuplicateColumns, place, "line {} is also for \"{}\"", first->second,
          fields[0]);
    }
    for (std::size_t i = 1; i < fields.size(); ++i) {
      const std::string value = fmt::format("\"{}\" of \"{}\" holds", fields[i], fields[0]);
      if (contains(fields[i], kTagMark)) {
        add(findings_, kinds::kMarkInValue, place, "{} \"%%\"", value);
      }
      if (i <= kPartnersColumns && holds_markup(fields[i])) {
        add(findings_, kinds::kMarkupInValue, place, "{} HTML", value);
      }
    }
  }

 private:
  /// Moves to the line of `field`.
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

}  // namespace

void check_columns(const SiteView& site, Diagnostics& findings) {
  const auto text = read_input(kExtraColumnsPath, kinds::kMissingFile, findings);
  if (!text) return;
  const ExtraColumnFields fields = read_extra_column_fields(*text);
  const std::size_t size = fields.group_size();
  if (size == 0) {
    const Place header{.file = kExtraColumnsPath, .line = 1};
    if (fields.kept_in_header) {
      add(findings, kinds::kShortHeader, header, "the header has {} of at least 3 fields",
          *fields.kept_in_header);
    } else {
      add(findings, kinds::kShortHeader, header, "no line follows the header");
    }
    return;
  }
  const std::span<const std::string_view> kept(fields.kept);
  ColumnCheck check(*text, findings);
  for (std::size_t at = *fields.kept_in_header; at + size <= kept.size(); at += size) {
    check.check(kept.subspan(at, size));
  }
  if (!check_fields(kinds::kColumnFields, kExtraColumnsPath, *text, *fields.kept_in_header,
                    findings)) {
    return;
  }
  for (const TradeRow& row : site.run.rows) {
    if (!row.extra_columns.empty()) continue;
    add(findings, kinds::kNoColumns, {.file = kExtraColumnsPath}, "no line is for \"{}\"",
        row.domain);
  }
}

void check_histories(const SiteView& site, Diagnostics& findings) {
  std::vector<const TradeRow*> missing;
  for (const TradeRow& row : site.run.rows) {
    const std::string path = history_path(row.domain);
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) {
      missing.push_back(&row);
    } else if (const auto text = read_input(path, kinds::kMissingHistory, findings)) {
      check_history(path, *text, findings);
    }
  }
  MissingHistories histories(site, findings);
  check_none_has(kinds::kNoHistories, histories.folder(), missing.size(), site, findings);
  histories.report(missing);
  check_shifted(site, kPeriod99, histories.folder(), findings);
}

void check_sum(const SiteView& site, Diagnostics& findings) {
  const auto text = read_input(kSumPath, kinds::kMissingFile, findings);
  // After a line with too few fields, other fields are read as the trades' numbers.
  if (!text || !check_fields(kinds::kSumFields, kSumPath, *text, kSumFields, findings)) return;
  if (site.run.trades.empty()) return;
  for (const Period period : {kPeriod60, kPeriod24, kPeriod07}) {
    check_shifted(site, period, kSumPath, findings);
  }
  const std::set<std::string> ids = check_sum_records(*text, site, findings);
  std::size_t lacking = 0;
  for (const TradeRow& row : site.run.rows) {
    if (ids.contains(row.id)) continue;
    ++lacking;
    add(findings, kinds::kNoSumRecord, {.file = kSumPath}, "no record is for {} (number {})",
        row.domain, row.id);
  }
  check_none_has(kinds::kNoFigures, kSumPath, lacking, site, findings);
}

}  // namespace toplist::ctl
