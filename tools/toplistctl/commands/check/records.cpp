#include "toplistctl/commands/check/records.h"

#include <algorithm>

#include "util/fields.h"

namespace toplist::ctl {

std::string_view without_end_blanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

std::optional<Misfit> find_misfit(std::string_view text, std::size_t size, LineBreaks breaks) {
  FieldReader fields(without_end_blanks(text));
  std::size_t in_record = 0;
  Misfit place{1, 0};
  for (std::string_view field; fields.next(field);) {
    const auto lines = std::count(field.begin(), field.end(), kLineSeparator);
    if (lines > 0) {
      if (in_record != 0 && breaks == LineBreaks::between_records) return place;
      place = {place.line + static_cast<std::size_t>(lines), 0};
    }
    ++place.fields;
    in_record = (in_record + 1) % size;
  }
  return in_record == 0 ? std::nullopt : std::optional(place);
}

}  // namespace toplist::ctl
