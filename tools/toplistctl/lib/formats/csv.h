#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace toplist::ctl {

/// Text of comma-separated values as of RFC 4180. A cell is quoted where a reader would take it for
/// something else: a separator, a quote, a line break, blanks at an end that some cut off.
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

}  // namespace toplist::ctl
