#include "toplist/filters.h"

#include <dirent.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "util/fields.h"
#include "util/file.h"
#include "util/number.h"
#include "util/text.h"

namespace toplist {
namespace {

constexpr const char* kGroupFolder = "d/gr/";
constexpr std::size_t kGroupFieldsBeforeId = 1;
constexpr std::size_t kGroupFieldsAfterId = kGroupFields - kGroupFieldsBeforeId - 1;

constexpr std::size_t kShortestListValue = 4;
constexpr std::size_t kShortestListItem = 3;

using RowFigure = std::int32_t (*)(const TradeRow&);

template <Period period, Counter counter>
std::int32_t counter_of(const TradeRow& row) {
  return row.periods[period].*counter;
}

template <Period period, std::size_t i>
std::int32_t stored_percent(const TradeRow& row) {
  return row.periods[period].percent[i];
}

struct Minimum {
  std::string_view key;
  RowFigure figure;
};

constexpr std::array<Minimum, kMinimumCount> kMinimums{{
    {"rin60", counter_of<kPeriod60, &PeriodBlock::rin>},
    {"uin60", counter_of<kPeriod60, &PeriodBlock::uin>},
    {"out60", counter_of<kPeriod60, &PeriodBlock::out>},
    {"cef60", counter_of<kPeriod60, &PeriodBlock::cef>},
    {"ctt60", counter_of<kPeriod60, &PeriodBlock::ctt>},
    {"ctg60", counter_of<kPeriod60, &PeriodBlock::ctg>},
    {"rin24", counter_of<kPeriod24, &PeriodBlock::rin>},
    {"uin24", counter_of<kPeriod24, &PeriodBlock::uin>},
    {"out24", counter_of<kPeriod24, &PeriodBlock::out>},
    {"cef24", counter_of<kPeriod24, &PeriodBlock::cef>},
    {"ctt24", counter_of<kPeriod24, &PeriodBlock::ctt>},
    {"ctg24", counter_of<kPeriod24, &PeriodBlock::ctg>},
    {"cprod", stored_percent<kPeriod24, 0>},  // clk24 per rin24
    {"tprod", stored_percent<kPeriod24, 3>},  // ctt24 per out24
}};

/// The names in a directory but "." and ".."; false when it cannot be opened.
bool list_directory(const std::string& path, TextColumn& names) {
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir(path.c_str()), ::closedir);
  if (!directory) return false;
  while (const dirent* entry = ::readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.append(std::string(name));
  }
  return true;
}

}  // namespace

bool is_minimum_key(std::string_view key) {
  return std::any_of(kMinimums.begin(), kMinimums.end(),
                     [key](const Minimum& minimum) { return key == minimum.key; });
}

bool is_setting_key(std::string_view key) {
  return key == kDomainsKey || key == kSkippedDomainsKey || key == kGroupKey || is_minimum_key(key);
}

std::optional<std::string> group_path(std::string_view value) {
  if (value == "*") return std::nullopt;
  std::string name(value);
  std::erase_if(name, [](char c) { return c == '\r' || c == '\n' || c == ' '; });
  if (name.empty()) return std::nullopt;
  return kGroupFolder + name;
}

ToplistFilters::ToplistFilters() { minimums_.fill(kMinimumOff); }

void ToplistFilters::apply(const ToplistSetting& setting) {
  if (setting.key == kDomainsKey) return parse_domains(std::string(setting.value), domains_);
  if (setting.key == kSkippedDomainsKey) {
    return parse_domains(std::string(setting.value), skipped_domains_);
  }
  if (setting.key == kGroupKey) return add_group(setting.value);
  for (std::size_t i = 0; i < kMinimums.size(); ++i) {
    if (setting.key == kMinimums[i].key) minimums_[i] = parse_int32(setting.value);
  }
}

void ToplistFilters::add_group(std::string_view value) {
  const std::optional<std::string> path = group_path(value);
  if (!path) return;
  FileBuffer file;
  if (file.read(*path)) {
    parse_group(file.text(), members_);
  } else {
    unopened_groups_.push_back(*path);
  }
}

std::string_view ToplistFilters::dropped_by(const TradeRow& row) const {
  if (!domains_.empty() && !domains_.contains(row.domain)) return kDomainsKey;
  if (!members_.empty() && !members_.contains(row.id)) return kGroupKey;
  if (row.mark != 0) return kThumbnailFilter;
  if (skipped_domains_.contains(row.domain)) return kSkippedDomainsKey;
  return missed_minimum(row);
}

std::string_view ToplistFilters::missed_minimum(const TradeRow& row) const {
  for (std::size_t i = 0; i < kMinimums.size(); ++i) {
    if (minimums_[i] != kMinimumOff && kMinimums[i].figure(row) < minimums_[i]) {
      return kMinimums[i].key;
    }
  }
  return {};
}

ToplistFilters filters_of(std::string_view template_path,
                          std::span<const ToplistSetting> settings) {
  const std::string_view template_name = template_path.substr(kTemplateFolder.size());
  ToplistFilters filters;
  for (const ToplistSetting& setting : settings) {
    if (setting.template_name == template_name) filters.apply(setting);
  }
  return filters;
}

void parse_domains(std::string value, TextColumn& domains) {
  if (value.size() < kShortestListValue) return;
  std::replace(value.begin(), value.end(), '\n', ',');
  std::replace(value.begin(), value.end(), '\r', ',');
  std::erase(value, ' ');
  FieldReader items(value, ',');
  for (std::string_view item; items.next(item);) {
    if (item.size() >= kShortestListItem) domains.append(std::string(item));
  }
}

void parse_group(std::string_view text, TextColumn& members) {
  FieldReader fields(text);
  fields.skip(kGroupFields);
  for (std::string_view id;;) {
    fields.skip(kGroupFieldsBeforeId);
    if (!fields.next(id)) return;
    members.append(std::string(id));
    fields.skip(kGroupFieldsAfterId);
  }
}

bool mark_rows_without_thumbnail(const std::string& directory, std::span<TradeRow> rows) {
  TextColumn names;
  if (!list_directory(directory, names)) return false;
  for (TradeRow& row : rows) row.mark = names.contains(row.domain + ".jpg") ? 0 : 1;
  return true;
}

}  // namespace toplist
