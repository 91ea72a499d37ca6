#include "render/tag.h"

#include <algorithm>
#include <array>

#include "util/number.h"
#include "util/text.h"

namespace toplist {
namespace {

constexpr std::size_t kShortNameLength = 3;
constexpr std::size_t kLongNameLength = 5;
constexpr std::string_view kColumnStem = "att";
constexpr std::int32_t kFirstAttColumn = 3;  ///< "att00" shows this entry of the extra columns.

constexpr std::size_t name_start = kTagMark.size();
constexpr std::size_t rank_start(std::size_t name_length) { return name_start + name_length + 1; }

/// Entry `index` of the extra columns, or nothing when there is none.
std::string_view extra_column(const TradeRow& row, std::int64_t index) {
  if (index < 0 || index >= static_cast<std::int64_t>(row.extra_columns.size())) return {};
  return row.extra_columns[static_cast<std::size_t>(index)];
}

using AppendText = void (*)(const TradeRow&, std::string&);

template <std::int64_t index>
void append_extra_column(const TradeRow& row, std::string& value) {
  value += extra_column(row, index);
}

void append_link(const TradeRow& row, std::string& value) {
  value += "?id=";
  value += row.id;
  value += "&u=";
  value += row.url;
}

/// The names of short tags.
struct TextName {
  std::string_view name;
  AppendText append;
};
constexpr std::array<TextName, 7> kTextNames{{
    {"tid", [](const TradeRow& row, std::string& value) { value += row.id; }},
    {"dom", [](const TradeRow& row, std::string& value) { value += row.domain; }},
    {"url", [](const TradeRow& row, std::string& value) { value += row.url; }},
    {"lnk", append_link},
    {"tit", append_extra_column<0>},
    {"des", append_extra_column<1>},
    {"img", append_extra_column<2>},
}};

/// nullptr for any other name.
const TextName* find_text_name(std::string_view name) {
  const auto entry = std::find_if(kTextNames.begin(), kTextNames.end(),
                                  [name](const TextName& t) { return name == t.name; });
  return entry == kTextNames.end() ? nullptr : &*entry;
}

bool has_mark_at(std::string_view text, std::size_t position) {
  return text.substr(std::min(position, text.size()), kTagMark.size()) == kTagMark;
}

}  // namespace

std::optional<Tag> read_tag(std::string_view text) {
  Tag tag;
  tag.closes_short = has_mark_at(text, kShortTagLength - kTagMark.size());
  const bool closes_long = has_mark_at(text, kLongTagLength - kTagMark.size());
  if (!tag.closes_short && !closes_long) return std::nullopt;

  const std::size_t name_length = closes_long ? kLongNameLength : kShortNameLength;
  tag.name = text.substr(name_start, name_length);
  tag.rank = parse_int32(text.substr(rank_start(name_length), kRankDigits));
  if (closes_long && tag.name.starts_with(kColumnStem)) {
    tag.column = parse_int32(tag.name.substr(kColumnStem.size()));
  }
  return tag;
}

bool has_known_name(const Tag& tag) {
  return find_statistic(tag.name) || find_text_name(tag.name) != nullptr || column_entry(tag);
}

std::optional<std::int64_t> column_entry(const Tag& tag) {
  if (!tag.name.starts_with(kColumnStem)) return std::nullopt;
  return static_cast<std::int64_t>(tag.column) + kFirstAttColumn;
}

std::size_t expand_tag(const Tag& tag, RankedRows rows, std::string& value) {
  // A negative rank becomes one that no list reaches.
  if (static_cast<std::uint32_t>(tag.rank) >= rows.size()) {
    value += ' ';
    return tag.name.size() == kLongNameLength ? kLongTagLength : kShortTagLength;
  }
  const TradeRow& row = *rows[static_cast<std::size_t>(tag.rank)];
  if (const auto statistic = find_statistic(tag.name)) {
    append_number(value, row.periods[statistic->period].*statistic->counter);
    return kLongTagLength;
  }
  if (const TextName* text = find_text_name(tag.name)) {
    text->append(row, value);
    return kShortTagLength;
  }
  if (const auto entry = column_entry(tag)) {
    // Also for the short "att". Its column number -1 shows the picture column, and it replaces the
    // two characters after it as well. Templates rely on it (contract: short-att).
    value += extra_column(row, *entry);
    return kLongTagLength;
  }
  return tag.closes_short ? kShortTagLength : kLongTagLength;
}

}  // namespace toplist
