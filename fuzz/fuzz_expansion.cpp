// The expansion of a source and what it includes, against the same steps carried out one by one.
// The bytes are the files "a", the source, "b" and "c", with a form feed between them.

#include <cstdint>
#include <string>
#include <string_view>

#include "input.h"
#include "support/slow_source_expansion.h"
#include "util/fields.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size > 1024) return 0;  // the slow way takes time with the square of the includes
  toplist::FieldReader texts({reinterpret_cast<const char*>(bytes), size}, '\f');
  toplist::test::Sources sources;
  for (const char* name : {"a", "b", "c"}) {
    std::string_view text;
    texts.next(text);
    sources[name] = text;
  }
  const std::string difference = toplist::test::difference(sources);
  toplist::fuzz::require(difference.empty(), difference.c_str());
  return 0;
}
