#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toplistctl/lib/formats/csv_errors.h"

namespace toplist::ctl {

/// A CSV file in memory: the names of its columns, and rows of as many cells.
class CsvTable {
 public:
  /// Reads the file's text: cells separated by ",", quoted where need be, a header in front. Cells
  /// hold any bytes, blanks at their ends included. Empty lines and a byte order mark are passed
  /// over. A row of another length than the header's is an error and left out; behind a misplaced
  /// or missing quote nothing more is read.
  CsvTable(std::string_view text, CsvErrors& errors);

  /// Tells columns that are not known, that are there twice, and required ones that are not.
  void check_header(const std::function<bool(std::string_view)>& is_known,
                    std::span<const std::string_view> required, CsvErrors& errors) const;

  [[nodiscard]] const std::vector<std::string>& header() const { return header_; }
  [[nodiscard]] std::optional<std::size_t> column(std::string_view name) const;

  [[nodiscard]] std::size_t rows() const { return lines_.size(); }
  [[nodiscard]] std::string_view cell(std::size_t row, std::size_t column) const;
  /// The cell as a whole number of 32 bits; nothing, told to `errors`, when it is something else.
  [[nodiscard]] std::optional<std::int32_t> number(std::size_t row, std::size_t column,
                                                   CsvErrors& errors) const;

  [[nodiscard]] std::size_t line(std::size_t row) const { return lines_[row]; }  ///< of its start
  [[nodiscard]] CsvPlace place(std::size_t row, std::size_t column) const;

 private:
  class Reader;

  std::vector<std::string> header_;
  std::size_t header_line_ = 1;
  std::string cells_;              ///< all cells, one behind the other
  std::vector<std::size_t> ends_;  ///< where each cell ends in `cells_`, row by row
  std::vector<std::size_t> lines_;
};

}  // namespace toplist::ctl
