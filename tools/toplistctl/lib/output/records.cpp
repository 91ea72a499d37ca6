#include "toplistctl/lib/output/records.h"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "toplistctl/lib/formats/csv.h"
#include "toplistctl/lib/output/console.h"

namespace toplist::ctl {
namespace {

constexpr const char* kGap = "  ";

/// Characters of UTF-8 text: bytes that go on with a character do not count.
std::size_t width_of(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

std::string plain_text(const Value& value);

/// "text, text" of whatever `text_of` makes of each element.
template <typename Range, typename TextOf>
std::string joined(const Range& range, const TextOf& text_of) {
  std::string text;
  for (const auto& element : range) text += (text.empty() ? "" : ", ") + text_of(element);
  return text;
}

struct ToText {
  std::string operator()(std::monostate /*nothing*/) const { return ""; }
  std::string operator()(bool truth) const { return truth ? "yes" : "no"; }
  std::string operator()(std::int64_t number) const { return std::to_string(number); }
  std::string operator()(const std::string& text) const { return text; }
  std::string operator()(const List& list) const { return joined(list, plain_text); }
  std::string operator()(const Members& members) const {
    return joined(members, [](const auto& member) {
      return fmt::format("{} {}", member.first, plain_text(member.second));
    });
  }
};

std::string plain_text(const Value& value) {
  return std::visit(ToText{}, static_cast<const Value::Base&>(value));
}

std::vector<std::string> plain_texts(const List& values) {
  std::vector<std::string> texts(values.size());
  std::transform(values.begin(), values.end(), texts.begin(), plain_text);
  return texts;
}

std::string heading(std::string name) {
  for (char& c : name) {
    c = c == '_' ? ' ' : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return name;
}

void add_row(CsvText& csv, const std::vector<std::string>& cells) {
  for (const std::string& cell : cells) csv.add(cell);
  csv.end_row();
}

}  // namespace

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)) {
  std::vector<std::string> headings;
  for (const Column& column : columns_) headings.push_back(column.heading);
  add_row(std::move(headings));
}

void Table::add_row(std::vector<std::string> cells) {
  for (std::string& cell : cells) cell = printable(cell);
  rows_.push_back(std::move(cells));
}

std::vector<std::size_t> Table::widths() const {
  std::vector<std::size_t> widths(columns_.size());
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < widths.size(); ++i) {
      widths[i] = std::max(widths[i], width_of(row[i]));
    }
  }
  return widths;
}

std::string Table::text() const {
  const std::vector<std::size_t> wanted = widths();
  std::string text;
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string padding(wanted[i] - width_of(row[i]), ' ');
      if (i > 0) text += kGap;
      text += columns_[i].align == Align::left ? row[i] + padding : padding + row[i];
    }
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
  }
  return text;
}

std::string Records::text(Format format) const {
  if (format == Format::json) return json_text(json());
  return format == Format::csv ? csv_text() : table_text();
}

std::vector<std::vector<std::string>> Records::rows() const {
  std::vector<std::vector<std::string>> rows(records_.size());
  std::transform(records_.begin(), records_.end(), rows.begin(), plain_texts);
  return rows;
}

std::string Records::table_text() const {
  std::vector<Table::Column> columns;
  for (std::size_t i = 0; i < names_.size(); ++i) {
    const bool has_number = std::any_of(records_.begin(), records_.end(), [i](const List& values) {
      return values[i].is<std::int64_t>();
    });
    columns.push_back({heading(names_[i]), has_number ? Table::Align::right : Table::Align::left});
  }
  Table table(std::move(columns));
  for (auto& row : rows()) table.add_row(std::move(row));
  return table.text();
}

std::string Records::csv_text() const {
  CsvText csv;
  add_row(csv, names_);
  for (const auto& row : rows()) add_row(csv, row);
  return csv.text();
}

Value Records::json() const {
  List list;
  for (const List& values : records_) {
    Members object;
    for (std::size_t i = 0; i < names_.size(); ++i) object.emplace_back(names_[i], values[i]);
    list.emplace_back(std::move(object));
  }
  return list;
}

}  // namespace toplist::ctl
