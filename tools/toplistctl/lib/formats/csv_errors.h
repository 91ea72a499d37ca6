#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace toplist::ctl {

/// A place in a CSV file. Lines and columns count from 1; column 0 is the line as a whole.
struct CsvPlace {
  std::size_t line;
  std::size_t column = 0;
  std::string_view name = {};  ///< of the column
};

/// What is wrong with a CSV file. All of it is counted, the first findings are told.
class CsvErrors {
 public:
  static constexpr std::size_t kMostTold = 20;

  void add(const CsvPlace& place, std::string_view what);

  [[nodiscard]] bool empty() const { return count_ == 0; }
  [[nodiscard]] std::size_t count() const { return count_; }
  /// Such as "line 7, column 2 (domain): is longer than 75 bytes", in the order of the file; at
  /// most kMostTold of them.
  [[nodiscard]] std::vector<std::string> told() const;

 private:
  struct Diagnostic {
    std::size_t line;
    std::size_t column;
    std::string text;
  };

  std::size_t count_ = 0;
  std::vector<Diagnostic> first_;
};

}  // namespace toplist::ctl
