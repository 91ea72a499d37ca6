#pragma once

#include <string>
#include <vector>

#include "toplistctl/lib/output/value.h"

namespace toplist::ctl {

/// What a list may be written as.
enum class Format {
  table,  ///< for people: aligned columns
  json,   ///< a list of objects, numbers as numbers
  csv,    ///< RFC 4180, with a header line
};

/// A list of things that have the same members, written in any format.
class Records {
 public:
  /// The names are the members of the JSON objects and the header of the CSV; a table shows them in
  /// upper case, with blanks for underscores.
  explicit Records(std::vector<std::string> names) : names_(std::move(names)) {}

  /// One value for each name: a text, a number, a truth value, nothing (null), or an object of
  /// numbers. People see "yes" and "no" for truth values, and "name number, ..." for objects.
  void add(List values);

  [[nodiscard]] std::string text(Format format) const;

 private:
  [[nodiscard]] std::string table_text() const;
  [[nodiscard]] std::string csv_text() const;
  [[nodiscard]] Value json() const;

  std::vector<std::string> names_;
  std::vector<List> records_;
};

}  // namespace toplist::ctl
