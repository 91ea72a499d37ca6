#include "toplistctl/lib/output/records.h"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "toplistctl/lib/formats/csv.h"
#include "toplistctl/lib/output/table.h"

namespace toplist::ctl {
namespace {

std::string plain_text(const Value& value);

struct ToText {
  std::string operator()(std::monostate /*nothing*/) const { return ""; }
  std::string operator()(bool truth) const { return truth ? "yes" : "no"; }
  std::string operator()(std::int64_t number) const { return std::to_string(number); }
  std::string operator()(const std::string& text) const { return text; }
  std::string operator()(const List& list) const {
    std::string text;
    for (const Value& value : list) text += (text.empty() ? "" : ", ") + plain_text(value);
    return text;
  }
  std::string operator()(const Members& members) const {
    std::string text;
    for (const auto& [name, value] : members) {
      text += fmt::format("{}{} {}", text.empty() ? "" : ", ", name, plain_text(value));
    }
    return text;
  }
};

std::string plain_text(const Value& value) {
  return std::visit(ToText{}, static_cast<const Value::Base&>(value));
}

std::string heading(const std::string& name) {
  std::string text = name;
  for (char& c : text) {
    c = c == '_' ? ' ' : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return text;
}

void add_row(CsvText& csv, const std::vector<std::string>& cells) {
  for (const std::string& cell : cells) csv.add(cell);
  csv.end_row();
}

std::vector<std::string> plain_texts(const List& values) {
  std::vector<std::string> texts(values.size());
  std::transform(values.begin(), values.end(), texts.begin(), plain_text);
  return texts;
}

}  // namespace

void Records::add(List values) { records_.push_back(std::move(values)); }

std::string Records::text(Format format) const {
  if (format == Format::json) return json_text(json());
  return format == Format::csv ? csv_text() : table_text();
}

std::string Records::table_text() const {
  std::vector<Table::Column> columns;
  for (std::size_t i = 0; i < names_.size(); ++i) {
    const bool numbers = std::any_of(records_.begin(), records_.end(), [i](const List& values) {
      return values[i].is<std::int64_t>();
    });
    columns.push_back({heading(names_[i]), numbers ? Table::Align::right : Table::Align::left});
  }
  Table table(std::move(columns));
  for (const auto& values : records_) table.add_row(plain_texts(values));
  return table.text();
}

std::string Records::csv_text() const {
  CsvText csv;
  add_row(csv, names_);
  for (const auto& values : records_) add_row(csv, plain_texts(values));
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
