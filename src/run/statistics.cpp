#include "run/statistics.h"

#include <array>

#include "util/fields.h"
#include "util/large_pages.h"
#include "util/number.h"
#include "util/text.h"
#include "util/text_column.h"

namespace toplist {
namespace {

/// Few files have shorter fields on average. Unused room costs nothing.
constexpr std::size_t kShortFieldBytes = 16;

constexpr std::size_t kHistoryFieldsBeforeCounters = 2;
constexpr std::size_t kHistoryFieldsAfterCounters =
    kHistoryFields - kHistoryFieldsBeforeCounters - kFileOrder.size();
constexpr std::size_t kSumFieldsBeforeFurther = 3;
constexpr std::array<Period, 3> kSumPeriods{kPeriod60, kPeriod24, kPeriod07};
constexpr std::size_t kSumFieldsBeforeId = 1;
constexpr std::size_t kSumFieldsBehindId = kSumFields - kSumFieldsBeforeId - 1;

/// Reads the three period sections of one sum record; false when the text ends before the last.
bool read_sum_sections(FieldReader fields, TradeRow& row) {
  for (const Period period : kSumPeriods) {
    PeriodBlock& block = row.periods[period];
    for (const Counter counter : kFileOrder) {
      if (!fields.next_number(block.*counter)) return false;
    }
    fields.skip(kSumFieldsBeforeFurther);
    for (std::int32_t& further : block.further) {
      if (!fields.next_number(further)) return false;
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

std::string history_path(std::string_view domain) {
  return std::string("d/h/").append(domain).append(".his");
}

ExtraColumnFields read_extra_column_fields(std::string_view text) {
  ExtraColumnFields result;
  result.kept.reserve(text.size() / kShortFieldBytes);
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
  rows.reserve(trades.size());
  prefer_large_pages(rows.data(), rows.capacity() * sizeof(TradeRow));
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

  const auto groups = std::span(fields.kept).subspan(*fields.kept_in_header);
  std::vector<std::string_view> group_domains;
  for (std::size_t i = 0; i + group_size <= groups.size(); i += group_size) {
    group_domains.push_back(groups[i]);
  }
  const SoughtTexts sought(group_domains);
  for (TradeRow& row : rows) {
    sought.find(row.domain, [&](std::size_t group) {
      const auto values = groups.subspan(group * group_size + 1, group_size - 1);
      row.extra_columns.insert(row.extra_columns.end(), values.begin(), values.end());
      return true;
    });
  }
}

void add_history(std::string_view text, PeriodBlock& all_time) {
  FieldReader fields(text);
  for (std::int32_t number = 0;;) {
    fields.skip(kHistoryFieldsBeforeCounters);
    for (const Counter counter : kFileOrder) {
      if (!fields.next_number(number)) return;
      all_time.*counter = wrapping_add(all_time.*counter, number);
    }
    fields.skip(kHistoryFieldsAfterCounters);
  }
}

void read_recent_periods(std::string_view text, std::span<TradeRow> rows) {
  std::vector<std::string_view> record_ids;
  std::vector<FieldReader> records;  // each begins after its id
  FieldReader fields(text);
  fields.skip(kSumFieldsBeforeId);
  for (std::string_view id; fields.next(id); fields.skip(kSumFieldsBehindId + kSumFieldsBeforeId)) {
    record_ids.push_back(id);
    records.push_back(fields);
  }

  const SoughtTexts sought(record_ids);
  std::vector<TradeRow*> record_rows(records.size());  // of each, the first with its id
  for (TradeRow& row : rows) {
    sought.find(row.id, [&](std::size_t record) {
      const bool is_free = record_rows[record] == nullptr;
      if (is_free) record_rows[record] = &row;
      return is_free;  // an earlier row that has a record has all of this id
    });
  }

  for (std::size_t i = 0; i < records.size(); ++i) {
    TradeRow* const row = record_rows[i];
    if (row != nullptr && read_sum_sections(records[i], *row)) compute_percentages(*row);
  }
}

}  // namespace toplist
