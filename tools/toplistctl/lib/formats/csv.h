#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toplistctl/lib/diagnostics/diagnostic.h"

/// Comma-separated values as of RFC 4180: text, and tables read from it.
namespace toplist::ctl {

/// Errors of a CSV file. They are not faults of a site, so no check reports them.
inline constexpr Kind kCsvError{"csv", Effect::stop, "Correct the file and import it again."};

/// Text of comma-separated values. A cell is quoted if it contains a separator, a quote or a line
/// break, or blanks at an end, which some readers cut off.
class CsvText {
 public:
  void add(std::string_view cell);
  void add(std::int32_t number);
  void end_row();

  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  void separate();

  std::string text_;
  bool row_begun_ = false;
};

/// A CSV file in memory: the names of its columns, and rows of as many cells. Errors go to the list
/// given, with line and column, but no file.
class CsvTable {
 public:
  /// Reads the file's text: a header line, then rows; cells may be quoted. Cells are separated by
  /// ",",
  /// ";" or tabs, whichever is most frequent in the header. Cells may contain any bytes, and blanks
  /// at their ends belong to them. Empty lines and a byte order mark are skipped. A row of another
  /// length than the header is an error and left out. After a misplaced or missing quote, reading
  /// stops.
  CsvTable(std::string_view text, Diagnostics& errors);

  /// Reports unknown columns, columns that the header names twice, and missing required columns.
  void check_header(const std::function<bool(std::string_view)>& is_known,
                    std::span<const std::string_view> required);

  [[nodiscard]] const std::vector<std::string>& header() const { return header_; }
  [[nodiscard]] std::optional<std::size_t> column(std::string_view name) const;

  [[nodiscard]] std::size_t rows() const { return lines_.size(); }
  [[nodiscard]] std::string_view cell(std::size_t row, std::size_t column) const;
  /// The cell as a whole number of 32 bits; anything else is an error, and gives nothing.
  [[nodiscard]] std::optional<std::int32_t> number(std::size_t row, std::size_t column) const;

  [[nodiscard]] std::size_t line(std::size_t row) const { return lines_[row]; }  ///< of its start
  /// Reports an error in a cell.
  void error(std::size_t row, std::size_t column, std::string_view message) const;

 private:
  class Reader;

  void error_at(Place place, std::string message) const;

  Diagnostics& errors_;
  std::vector<std::string> header_;
  std::size_t header_line_ = 1;
  std::string cells_;              ///< all cells, one after the other
  std::vector<std::size_t> ends_;  ///< where each cell ends in `cells_`, row by row
  std::vector<std::size_t> lines_;
};

}  // namespace toplist::ctl
