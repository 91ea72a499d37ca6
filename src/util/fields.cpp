#include "util/fields.h"

namespace toplist {

bool FieldReader::take_any_number(std::string_view& rest, char separator, std::int32_t& number) {
  FieldReader reader(rest, separator);
  std::string_view field;
  if (!reader.next(field)) return false;
  number = parse_int32(field);
  rest = reader.rest_;
  return true;
}

}  // namespace toplist
