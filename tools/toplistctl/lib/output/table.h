#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace toplist::ctl {

/// Text in aligned columns under a line of headings.
class Table {
 public:
  enum class Align { left, right };
  struct Column {
    std::string heading;
    Align align = Align::left;
  };

  explicit Table(std::vector<Column> columns);

  /// As many cells as there are columns. Control characters, which a terminal would act upon, are
  /// replaced by "?".
  void add_row(std::vector<std::string> cells);

  /// One line each for the headings and the rows, without blanks at their ends.
  [[nodiscard]] std::string text() const;

 private:
  [[nodiscard]] std::vector<std::size_t> widths() const;

  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;  ///< the headings first
};

}  // namespace toplist::ctl
