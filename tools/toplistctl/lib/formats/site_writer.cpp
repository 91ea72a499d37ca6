#include "toplistctl/lib/formats/site_writer.h"

#include <algorithm>
#include <cstring>

#include "run/statistics.h"
#include "toplist/filters.h"
#include "util/fields.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

constexpr std::size_t kUnusedPerPeriod = 3;

template <std::size_t kSize>
void set_text(char (&field)[kSize], std::string_view text) {
  std::memcpy(field, text.data(), std::min(text.size(), kSize - 1));
}

void append_field(std::string& file, std::string_view text) {
  file += text;
  file += kFieldSeparator;
}

void append_field(std::string& file, std::int32_t number) {
  append_number(file, number);
  file += kFieldSeparator;
}

void append_zeros(std::string& file, std::size_t count) {
  while (count-- > 0) append_field(file, 0);
}

void append_counters(std::string& file, const PeriodBlock& block) {
  for (const Counter counter : kFileOrder) append_field(file, block.*counter);
}

void append_period(std::string& file, const PeriodBlock& block) {
  append_counters(file, block);
  append_zeros(file, kUnusedPerPeriod);
  for (const std::int32_t value : block.further) append_field(file, value);
}

void append_group_record(std::string& file, std::string_view first, std::string_view second) {
  append_field(file, first);
  append_field(file, second);
  append_zeros(file, kGroupFields - 2);
  file += kLineSeparator;
}

}  // namespace

TradeRecord make_trade(std::int32_t id, std::string_view domain, std::string_view url,
                       std::int32_t status) {
  TradeRecord trade;
  trade.trade_id = id;
  set_text(trade.domain, domain);
  set_text(trade.url, url);
  trade.status = status;
  return trade;
}

void append_trade(std::string& file, const TradeRecord& trade) {
  file.append(reinterpret_cast<const char*>(&trade), sizeof trade);
}

void append_sum(std::string& file, const SumRecord& record) {
  append_field(file, "sum");
  append_field(file, record.id);
  for (const PeriodBlock& period : record.periods) append_period(file, period);
  file += kLineSeparator;
}

void append_history(std::string& file, std::int32_t day, const PeriodBlock& counters) {
  append_field(file, day);
  append_field(file, 0);
  append_counters(file, counters);
  append_zeros(file, kHistoryFields - 2 - kFileOrder.size());
  file += kLineSeparator;
}

void append_column_header(std::string& file, std::span<const std::string_view> names) {
  append_columns(file, "domain", names);
}

void append_columns(std::string& file, std::string_view domain,
                    std::span<const std::string_view> values) {
  append_field(file, "line");
  append_field(file, domain);
  for (const std::string_view value : values) append_field(file, value);
  file += kLineSeparator;
}

void append_definition(std::string& file, const Definition& definition) {
  append_field(file, "list");
  append_field(file, definition.template_name);
  append_field(file, 0);
  append_field(file, definition.output_path);
  append_field(file, definition.order_by);
  append_field(file, definition.mode);
  append_field(file, definition.check);
  append_zeros(file, 2);
  file += kLineSeparator;
}

void append_setting(std::string& file, std::string_view template_name, std::string_view setting) {
  append_field(file, "set");
  append_field(file, template_name);
  append_field(file, setting);
  file += kLineSeparator;
}

std::string encode_group(std::string_view name, std::span<const std::int32_t> member_ids) {
  std::string file;
  append_group_record(file, "group", name);
  for (const std::int32_t id : member_ids) {
    append_group_record(file, "member", std::to_string(id));
  }
  return file;
}

std::string encode_harvest_file(const HarvestFile& values) {
  std::string file;
  for (const std::string* line :
       {&values.thumb_dir, &values.image_tool, &values.image_tool_args, &values.unused,
        &values.fetch_method, &values.thumbnail_optional, &values.harvest}) {
    file += *line;
    file += kLineSeparator;
  }
  return file;
}

}  // namespace toplist::ctl
