#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "toplistctl/lib/output/value.h"

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

  /// As many cells as there are columns; they become printable().
  void add_row(std::vector<std::string> cells);

  /// One line each for the headings and the rows, without blanks at their ends.
  [[nodiscard]] std::string text() const;

 private:
  [[nodiscard]] std::vector<std::size_t> widths() const;

  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;  ///< the headings first
};

/// How records are written.
enum class Format {
  table,  ///< for people: aligned columns
  json,   ///< a list of objects, numbers as numbers
  csv,    ///< RFC 4180, with a header line
};

/// Records that have the same members.
class Records {
 public:
  /// The names are the members of the JSON objects and the header of the CSV. A table shows them in
  /// upper case, with blanks for underscores.
  explicit Records(std::vector<std::string> names) : names_(std::move(names)) {}

  /// One value for each name. In tables and CSV truth values are "yes" and "no", and an object is
  /// "name value, ...".
  void add(List values) { records_.push_back(std::move(values)); }

  [[nodiscard]] std::string text(Format format) const;

  [[nodiscard]] const std::vector<std::string>& names() const { return names_; }
  /// The values as texts, as a table shows them.
  [[nodiscard]] std::vector<std::vector<std::string>> rows() const;

 private:
  [[nodiscard]] std::string table_text() const;
  [[nodiscard]] std::string csv_text() const;
  [[nodiscard]] Value json() const;

  std::vector<std::string> names_;
  std::vector<List> records_;
};

}  // namespace toplist::ctl
