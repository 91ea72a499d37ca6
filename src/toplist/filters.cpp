#include "toplist/filters.h"

#include <algorithm>
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

template <Period period, Counter counter>
constexpr Minimum kMinimumOf{kStatisticName<period, counter>,
                             [](const TradeRow& row) { return row.periods[period].*counter; }};

template <Period period, std::size_t i>
std::int32_t stored_percent(const TradeRow& row) {
  return row.periods[period].percent[i];
}

constexpr Minimum kMinimums[] = {
    kMinimumOf<kPeriod60, &PeriodBlock::rin>, kMinimumOf<kPeriod60, &PeriodBlock::uin>,
    kMinimumOf<kPeriod60, &PeriodBlock::out>, kMinimumOf<kPeriod60, &PeriodBlock::cef>,
    kMinimumOf<kPeriod60, &PeriodBlock::ctt>, kMinimumOf<kPeriod60, &PeriodBlock::ctg>,
    kMinimumOf<kPeriod24, &PeriodBlock::rin>, kMinimumOf<kPeriod24, &PeriodBlock::uin>,
    kMinimumOf<kPeriod24, &PeriodBlock::out>, kMinimumOf<kPeriod24, &PeriodBlock::cef>,
    kMinimumOf<kPeriod24, &PeriodBlock::ctt>, kMinimumOf<kPeriod24, &PeriodBlock::ctg>,
    {"cprod", stored_percent<kPeriod24, 0>},  // clk24 per rin24
    {"tprod", stored_percent<kPeriod24, 3>},  // ctt24 per out24
};

/// nullptr if no minimum has this key.
const Minimum* find_minimum(std::string_view key) {
  const auto* minimum =
      std::find_if(std::begin(kMinimums), std::end(kMinimums),
                   [key](const Minimum& candidate) { return key == candidate.key; });
  return minimum == std::end(kMinimums) ? nullptr : minimum;
}

}  // namespace

bool is_minimum_key(std::string_view key) { return find_minimum(key) != nullptr; }

bool is_setting_key(std::string_view key) {
  return key == kDomainsKey || key == kSkippedDomainsKey || key == kGroupKey || is_minimum_key(key);
}

std::optional<std::string> group_path(std::string_view value) {
  if (value == "*" || value.empty()) return std::nullopt;
  std::string path(value);
  std::erase_if(path, [](char c) { return c == '\r' || c == '\n' || c == ' '; });
  return path.insert(0, kGroupFolder);
}

void ToplistFilters::apply(const ToplistSetting& setting) {
  if (setting.key == kDomainsKey) return parse_domains(std::string(setting.value), domains_);
  if (setting.key == kSkippedDomainsKey) {
    return parse_domains(std::string(setting.value), skipped_domains_);
  }
  if (setting.key == kGroupKey) return add_group(setting.value);
  if (const Minimum* minimum = find_minimum(setting.key)) {
    set_minimum(*minimum, parse_int32(setting.value));
  }
}

void ToplistFilters::set_minimum(const Minimum& minimum, std::int32_t least) {
  std::erase_if(minimums_, [&](const MinimumInForce& set) { return set.minimum == &minimum; });
  if (least == kMinimumOff) return;
  const auto place =
      std::find_if(minimums_.begin(), minimums_.end(),
                   [&](const MinimumInForce& set) { return set.minimum > &minimum; });
  minimums_.insert(place, {&minimum, least});
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

template <typename Visit>
void ToplistFilters::visit_drops(const TradeRow& row, Visit visit) const {
  if (!domains_.empty() && !domains_.contains(row.domain) && !visit({kDomainsKey})) return;
  if (!members_.empty() && !members_.contains(row.id) && !visit({kGroupKey})) return;
  if (row.mark != 0 && !visit({kThumbnailFilter})) return;
  if (skipped_domains_.contains(row.domain) && !visit({kSkippedDomainsKey})) return;
  for (const auto& [minimum, least] : minimums_) {
    const std::int32_t figure = minimum->figure(row);
    if (figure < least && !visit({minimum->key, figure, least})) return;
  }
}

std::string_view ToplistFilters::dropped_by(const TradeRow& row) const {
  std::string_view filter;
  visit_drops(row, [&filter](const Drop& drop) {
    filter = drop.filter;
    return false;
  });
  return filter;
}

std::vector<Drop> ToplistFilters::drops(const TradeRow& row) const {
  std::vector<Drop> drops;
  visit_drops(row, [&drops](const Drop& drop) {
    drops.push_back(drop);
    return true;
  });
  return drops;
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
    if (item.size() >= kShortestListItem) domains.append(item);
  }
}

void parse_group(std::string_view text, TextColumn& members) {
  FieldReader fields(text);
  fields.skip(kGroupFields);
  for (std::string_view id;;) {
    fields.skip(kGroupFieldsBeforeId);
    if (!fields.next(id)) return;
    members.append(id);
    fields.skip(kGroupFieldsAfterId);
  }
}

bool mark_rows_without_thumbnail(const std::string& directory, std::span<TradeRow> rows) {
  std::vector<std::string> names;
  if (!list_directory(directory, names)) return false;
  const std::vector<std::string_view> views(names.begin(), names.end());
  const SoughtTexts sought(views);
  for (TradeRow& row : rows) {
    row.mark = 1;
    sought.find(row.domain + ".jpg", [&row](std::size_t) {
      row.mark = 0;
      return false;
    });
  }
  return true;
}

}  // namespace toplist
