#include "run/statistics.h"

#include <array>

#include "util/fields.h"
#include "util/number.h"
#include "util/text.h"
#include "util/text_column.h"

namespace toplist {
namespace {

constexpr std::size_t kHistoryFieldsBeforeCounters = 2;
constexpr std::size_t kHistoryFieldsAfterCounters =
    kHistoryFields - kHistoryFieldsBeforeCounters - kFileOrder.size();
constexpr std::size_t kSumFieldsBeforeFurther = 3;
constexpr std::array<Period, 3> kSumPeriods{kPeriod60, kPeriod24, kPeriod07};
constexpr std::size_t kSumFieldsBehindId = kSumFields - 2;

/// Reads the three period sections of one sum record; false when the text ends before the last.
bool read_sum_sections(FieldReader& fields, TradeRow& row) {
  std::string_view field;
  for (const Period period : kSumPeriods) {
    PeriodBlock& block = row.periods[period];
    for (const Counter counter : kFileOrder) {
      if (!fields.next(field)) return false;
      block.*counter = parse_int32(field);
    }
    fields.skip(kSumFieldsBeforeFurther);
    for (std::int32_t& further : block.further) {
      if (!fields.next(field)) return false;
      further = parse_int32(field);
    }
  }
  return true;
}

void compute_percentages(TradeRow& row) {
  for (PeriodBlock& block : row.periods) {
    for (std::size_t i = 0; i < kRatios.size(); ++i) {
      block.percent[i] = percentage(block, kRatios[i]);
    }
  }
}

}  // namespace

std::string history_path(std::string_view domain) { return "d/h/" + std::string(domain) + ".his"; }

ExtraColumnFields read_extra_column_fields(std::string_view text) {
  ExtraColumnFields result;
  FieldReader fields(text);
  for (std::string_view field; fields.next(field);) {
    if (!contains(field, "\n")) {
      result.kept.push_back(field);
    } else if (!result.kept_in_header) {
      result.kept_in_header = result.kept.size();
    }
  }
  return result;
}

std::vector<TradeRow> build_rows(std::span<const TradeRecord> trades) {
  std::vector<TradeRow> rows;
  for (const TradeRecord& trade : trades) {
    if (!is_active(trade)) continue;
    TradeRow& row = rows.emplace_back();
    append_number(row.id, trade.trade_id);
    row.domain = domain_of(trade);
    row.url = url_of(trade);
  }
  return rows;
}

void attach_extra_columns(std::string_view text, std::span<TradeRow> rows) {
  const ExtraColumnFields fields = read_extra_column_fields(text);
  const std::size_t group_size = fields.group_size();
  if (group_size == 0) return;

  TextColumn domains;
  domains.reserve(rows.size());
  for (const TradeRow& row : rows) domains.append(row.domain);

  std::span<const std::string_view> rest(fields.kept);
  rest = rest.subspan(*fields.kept_in_header);
  for (; rest.size() >= group_size; rest = rest.subspan(group_size)) {
    const auto values = rest.subspan(1, group_size - 1);
    for (auto row = domains.find(rest.front()); row; row = domains.find(rest.front(), *row + 1)) {
      auto& columns = rows[*row].extra_columns;
      columns.insert(columns.end(), values.begin(), values.end());
    }
  }
}

void add_history(std::string_view text, PeriodBlock& all_time) {
  FieldReader fields(text);
  for (std::string_view field;;) {
    fields.skip(kHistoryFieldsBeforeCounters);
    for (const Counter counter : kFileOrder) {
      if (!fields.next(field)) return;
      all_time.*counter = wrapping_add(all_time.*counter, parse_int32(field));
    }
    fields.skip(kHistoryFieldsAfterCounters);
  }
}

void read_recent_periods(std::string_view text, std::span<TradeRow> rows) {
  TextColumn ids;
  ids.reserve(rows.size());
  for (const TradeRow& row : rows) ids.append(row.id);

  FieldReader fields(text);
  for (std::string_view id;;) {
    fields.skip(1);
    if (!fields.next(id)) return;
    const auto row = ids.find(id);
    if (!row) {
      fields.skip(kSumFieldsBehindId);
    } else if (read_sum_sections(fields, rows[*row])) {
      compute_percentages(rows[*row]);
    }
  }
}

}  // namespace toplist
