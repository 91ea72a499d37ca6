#include "toplistctl/lib/formats/csv.h"

#include <csv.h>
#include <fmt/core.h>

#include <algorithm>
#include <charconv>
#include <new>
#include <utility>

#include "util/fields.h"
#include "util/number.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kWideMarks[] = {"\xFF\xFE", "\xFE\xFF"};  ///< of UTF-16
constexpr std::string_view kSeparators = ",;\t";

std::size_t count_in(std::string_view text, char c) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), c));
}

bool needs_quotes(std::string_view cell) {
  if (cell.empty()) return false;
  return is_blank(cell.front()) || is_blank(cell.back()) ||
         cell.find_first_of(",\"\r\n") != std::string_view::npos;
}

/// What separates the cells of the header, the first line that is not empty.
char separator_of(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of("\r\n"), text.size()));
  const std::string_view header = text.substr(0, text.find_first_of("\r\n"));
  return *std::max_element(kSeparators.begin(), kSeparators.end(), [header](char a, char b) {
    return count_in(header, a) < count_in(header, b);
  });
}

}  // namespace

void CsvText::add(std::string_view cell) {
  separate();
  if (!needs_quotes(cell)) {
    text_ += cell;
    return;
  }
  std::string escaped(cell);
  replace_all(escaped, "\"", "\"\"");
  text_ += '"' + escaped + '"';
}

void CsvText::add(std::int32_t number) {
  separate();
  append_number(text_, number);
}

void CsvText::end_row() {
  text_ += "\r\n";
  row_begun_ = false;
}

void CsvText::separate() {
  if (row_begun_) text_ += ',';
  row_begun_ = true;
}

/// Takes the parser's cells into the table and keeps count of lines.
class CsvTable::Reader {
 public:
  Reader(CsvTable& table, char separator) : table_(table) {
    if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI) != 0) throw std::bad_alloc();
    csv_set_delim(&parser_, static_cast<unsigned char>(separator));
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
        return table_.error_at({{}, 0, line_, row_cells_ + 1},
                               "a quote is misplaced: quote the whole cell, and double the quotes "
                               "in it");
      }
      text.remove_prefix(size);
    }
    if (csv_fini(&parser_, on_cell, on_row_end, this) != 0) {
      table_.error_at({{}, 0, cell_line_, row_cells_ + 1},
                      "the closing quote of this cell is missing");
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
    if (row_cells_++ == 0) row_line_ = line_ - count_in(cell, kLineSeparator);
    table_.cells_ += cell;
    table_.ends_.push_back(table_.cells_.size());
    cell_line_ = line_;
  }

  void end_row() {
    cell_line_ = line_ + 1;
    const std::size_t expected = table_.header_.size();
    if (expected == 0) {
      take_header();
    } else if (row_cells_ == expected) {
      table_.lines_.push_back(row_line_);
    } else {
      table_.error_at({{}, 0, row_line_, 0}, fmt::format("the line has {}, the header {}",
                                                         count_of(row_cells_, "cell"), expected));
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
  csv_parser parser_{};
  std::size_t line_ = 0;  ///< that is being read
  std::size_t row_line_ = 1;
  std::size_t cell_line_ = 1;  ///< where the next cell begins
  std::size_t row_cells_ = 0;
};

CsvTable::CsvTable(std::string_view text, Diagnostics& errors) : errors_(errors) {
  if (std::any_of(std::begin(kWideMarks), std::end(kWideMarks),
                  [text](std::string_view mark) { return text.starts_with(mark); })) {
    error_at({{}, 0, 1, 0}, "the file is UTF-16. Convert it: iconv -f UTF-16 -t UTF-8");
    return;
  }
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  const std::size_t before = errors.size();
  Reader(*this, separator_of(text)).read(text);
  if (header_.empty() && errors.size() == before) {
    error_at({{}, 0, 1, 0}, "the file is empty. Its first line must name the columns");
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

std::optional<std::int32_t> CsvTable::number(std::size_t row, std::size_t column) const {
  const std::string_view text = cell(row, column);
  const char* end = text.data() + text.size();
  std::int32_t value = 0;
  const auto parsed = std::from_chars(text.data(), end, value);
  if (parsed.ec == std::errc() && parsed.ptr == end) return value;
  error(row, column,
        parsed.ec == std::errc::result_out_of_range ? "the number does not fit into 32 bits"
                                                    : "this must be a whole number");
  return std::nullopt;
}

void CsvTable::error(std::size_t row, std::size_t column, std::string_view message) const {
  std::size_t line = lines_[row];
  for (std::size_t i = 0; i < column; ++i) line += count_in(cell(row, i), kLineSeparator);
  error_at({{}, 0, line, column + 1}, fmt::format("column {}: {}", header_[column], message));
}

void CsvTable::error_at(Place place, std::string message) const {
  errors_.push_back({&kCsvError, std::move(place), std::move(message)});
}

void CsvTable::check_header(const std::function<bool(std::string_view)>& is_known,
                            std::span<const std::string_view> required) {
  for (std::size_t i = 0; i < header_.size(); ++i) {
    const bool is_first = column(header_[i]) == i;
    if (is_first && is_known(header_[i])) continue;
    error_at({{}, 0, header_line_, i + 1},
             fmt::format("column {}: {}", header_[i],
                         is_first ? "there is no column with this name"
                                  : "the header names this column twice"));
  }
  for (const std::string_view name : required) {
    if (header_.empty() || column(name)) continue;
    error_at({{}, 0, header_line_, 0}, fmt::format("the column {} is missing", name));
  }
}

}  // namespace toplist::ctl
