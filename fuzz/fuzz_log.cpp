// What the system log makes of any text.

#include <cstdint>
#include <string>

#include "input.h"
#include "run/sys_log.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  toplist::fuzz::Input input(bytes, size);
  const std::string clean = toplist::sanitize_log_field(input.rest());
  toplist::fuzz::require(clean.find_first_of("\r\n<>`'\"!\\/") == std::string::npos,
                         "a character that the log must not hold");
  for (std::size_t at = clean.find(';'); at != std::string::npos; at = clean.find(';', at + 1)) {
    toplist::fuzz::require(at >= 4 && clean.rfind("&#", at) == at - 4,
                           "a semicolon outside of an entity");
  }
  return 0;
}
