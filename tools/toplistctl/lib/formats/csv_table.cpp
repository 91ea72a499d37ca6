#include "toplistctl/lib/formats/csv_table.h"

#include <csv.h>

#include <algorithm>
#include <charconv>
#include <new>

#include "util/fields.h"

namespace toplist::ctl {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::size_t line_feeds(std::string_view text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), kLineSeparator));
}

}  // namespace

/// Takes the parser's cells into the table and keeps count of lines.
class CsvTable::Reader {
 public:
  Reader(CsvTable& table, CsvErrors& errors) : table_(table), errors_(errors) {
    if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI) != 0) throw std::bad_alloc();
    csv_set_space_func(&parser_, [](unsigned char) { return 0; });  // blanks belong to the cells
  }
  ~Reader() { csv_free(&parser_); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  void read(std::string_view text) {
    // Line by line, so that each cell's line is known.
    while (!text.empty()) {
      ++line_;
      const std::size_t size = std::min(text.find(kLineSeparator), text.size() - 1) + 1;
      if (csv_parse(&parser_, text.data(), size, on_cell, on_row_end, this) != size) {
        return errors_.add({line_, row_cells_ + 1},
                           "a quote is out of place: a cell that holds one must be quoted as a "
                           "whole, and the quotes in it doubled");
      }
      text.remove_prefix(size);
    }
    if (csv_fini(&parser_, on_cell, on_row_end, this) != 0) {
      errors_.add({cell_line_, row_cells_ + 1}, "the quote that begins this cell is never closed");
    }
  }

 private:
  static void on_cell(void* bytes, std::size_t size, void* reader) {
    static_cast<Reader*>(reader)->add_cell({static_cast<const char*>(bytes), size});
  }
  static void on_row_end(int /*terminator*/, void* reader) {
    static_cast<Reader*>(reader)->end_row();
  }

  void add_cell(std::string_view cell) {
    if (row_cells_++ == 0) row_line_ = line_ - line_feeds(cell);
    table_.cells_ += cell;
    table_.ends_.push_back(table_.cells_.size());
    cell_line_ = line_;
  }

  void end_row() {
    cell_line_ = line_ + 1;
    if (table_.header_.empty()) {
      take_header();
    } else if (row_cells_ == table_.header_.size()) {
      table_.lines_.push_back(row_line_);
    } else {
      errors_.add({row_line_}, "the number of cells is " + std::to_string(row_cells_) +
                                   ", in the header " + std::to_string(table_.header_.size()));
      drop_row();
    }
    row_cells_ = 0;
  }

  void take_header() {
    std::size_t begin = 0;
    for (const std::size_t end : table_.ends_) {
      table_.header_.push_back(table_.cells_.substr(begin, end - begin));
      begin = end;
    }
    table_.header_line_ = row_line_;
    drop_row();
  }

  void drop_row() {
    table_.ends_.resize(table_.ends_.size() - row_cells_);
    table_.cells_.resize(table_.ends_.empty() ? 0 : table_.ends_.back());
  }

  CsvTable& table_;
  CsvErrors& errors_;
  csv_parser parser_{};
  std::size_t line_ = 0;  ///< that is being read
  std::size_t row_line_ = 1;
  std::size_t cell_line_ = 1;  ///< where the next cell begins
  std::size_t row_cells_ = 0;
};

CsvTable::CsvTable(std::string_view text, CsvErrors& errors) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  Reader(*this, errors).read(text);
  if (header_.empty() && errors.empty()) {
    errors.add({header_line_}, "there is nothing here: the first line must name the columns");
  }
}

std::optional<std::size_t> CsvTable::column(std::string_view name) const {
  const auto found = std::find(header_.begin(), header_.end(), name);
  if (found == header_.end()) return std::nullopt;
  return static_cast<std::size_t>(found - header_.begin());
}

std::string_view CsvTable::cell(std::size_t row, std::size_t column) const {
  const std::size_t index = row * header_.size() + column;
  const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
  return std::string_view(cells_).substr(begin, ends_[index] - begin);
}

std::optional<std::int32_t> CsvTable::number(std::size_t row, std::size_t column,
                                             CsvErrors& errors) const {
  const std::string_view text = cell(row, column);
  const char* end = text.data() + text.size();
  std::int32_t value = 0;
  const auto parsed = std::from_chars(text.data(), end, value);
  if (parsed.ec == std::errc() && parsed.ptr == end) return value;
  errors.add(place(row, column), parsed.ec == std::errc::result_out_of_range
                                     ? "a number beyond 32 bits"
                                     : "a whole number must stand here");
  return std::nullopt;
}

CsvPlace CsvTable::place(std::size_t row, std::size_t column) const {
  std::size_t line = lines_[row];
  for (std::size_t i = 0; i < column; ++i) line += line_feeds(cell(row, i));
  return {line, column + 1, header_[column]};
}

void CsvTable::check_header(const std::function<bool(std::string_view)>& is_known,
                            std::span<const std::string_view> required, CsvErrors& errors) const {
  for (std::size_t i = 0; i < header_.size(); ++i) {
    const CsvPlace place{header_line_, i + 1, header_[i]};
    if (!is_known(header_[i])) errors.add(place, "no column of this name is known");
    if (column(header_[i]) != i) errors.add(place, "this column is there twice");
  }
  for (const std::string_view name : required) {
    if (column(name)) continue;
    errors.add({header_line_}, "the column \"" + std::string(name) + "\" is missing");
  }
}

}  // namespace toplist::ctl
