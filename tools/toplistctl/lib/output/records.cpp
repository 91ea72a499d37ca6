#include "toplistctl/lib/output/records.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "toplistctl/lib/formats/csv.h"
#include "toplistctl/lib/output/table.h"

namespace toplist::ctl {
namespace {

std::string plain_text(const Json& value) {
  if (value.is_null()) return "";
  if (value.is_string()) return value.get<std::string>();
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (!value.is_object()) return value.dump();
  std::string text;
  for (const auto& [name, number] : value.items()) {
    text += (text.empty() ? "" : ", ") + name + " " + number.dump();
  }
  return text;
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

std::vector<std::string> plain_texts(const std::vector<Json>& values) {
  std::vector<std::string> texts;
  texts.reserve(values.size());
  for (const Json& value : values) texts.push_back(plain_text(value));
  return texts;
}

}  // namespace

void Records::add(std::vector<Json> values) { records_.push_back(std::move(values)); }

std::string Records::text(Format format) const {
  if (format == Format::json) return json_text(json());
  return format == Format::csv ? csv_text() : table_text();
}

std::string Records::table_text() const {
  std::vector<Table::Column> columns;
  for (std::size_t i = 0; i < names_.size(); ++i) {
    const bool numbers = std::any_of(records_.begin(), records_.end(),
                                     [i](const auto& values) { return values[i].is_number(); });
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

Json Records::json() const {
  Json list = Json::array();
  for (const auto& values : records_) {
    Json object = Json::object();
    for (std::size_t i = 0; i < names_.size(); ++i) object[names_[i]] = values[i];
    list.push_back(std::move(object));
  }
  return list;
}

}  // namespace toplist::ctl
