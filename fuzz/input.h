#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string_view>

namespace toplist::fuzz {

/// Takes the values of a test case from the fuzzer's bytes; zeros and empty texts when they run
/// out.
class Input {
 public:
  Input(const std::uint8_t* bytes, std::size_t size)
      : rest_(reinterpret_cast<const char*>(bytes), size) {}

  template <typename Integer>
  Integer integer() {
    Integer value = 0;
    const std::string_view bytes = text(sizeof value);
    std::memcpy(&value, bytes.data(), bytes.size());
    return value;
  }

  /// At most `size` bytes.
  std::string_view text(std::size_t size) {
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view rest() { return text(rest_.size()); }
  [[nodiscard]] bool empty() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

/// Ends the fuzzer with a finding unless `holds`.
inline void require(bool holds, const char* what) {
  if (holds) return;
  std::cerr << "finding: " << what << '\n';
  std::abort();
}

}  // namespace toplist::fuzz
