#include "toplistctl/lib/output/table.h"

#include <algorithm>
#include <utility>

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
    for (std::size_t i = 0; i < widths.size(); ++i)
      widths[i] = std::max(widths[i], width_of(row[i]));
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

}  // namespace toplist::ctl
