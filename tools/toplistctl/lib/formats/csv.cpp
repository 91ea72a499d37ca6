#include "toplistctl/lib/formats/csv.h"

#include "util/number.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

bool needs_quotes(std::string_view cell) {
  if (cell.empty()) return false;
  return is_blank(cell.front()) || is_blank(cell.back()) ||
         cell.find_first_of(",\"\r\n") != std::string_view::npos;
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

}  // namespace toplist::ctl
