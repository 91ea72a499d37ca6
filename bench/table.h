#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace toplist::bench {

/// Of an odd number of values, the middle one.
inline double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// Prints one figure: what was measured, against what, and their ratio.
/// `limit` is the ratio to stay within; 0 when the row only informs.
inline void print_ratio(const std::string& what, const std::string& measured,
                        const std::string& against, double ratio, double limit) {
  std::printf("%-44s %12s %12s %7.2f", what.c_str(), measured.c_str(), against.c_str(), ratio);
  if (limit > 0) std::printf("  <= %-5g %s", limit, ratio <= limit ? "ok" : "NOT REACHED");
  std::printf("\n");
  std::fflush(stdout);
}

inline void print_head(const char* title) {
  std::printf("\n%-44s %12s %12s %7s\n", title, "measured", "against", "ratio");
}

inline std::string milliseconds(double seconds) {
  std::string text(32, '\0');
  text.resize(
      static_cast<std::size_t>(std::snprintf(text.data(), text.size(), "%.2f ms", seconds * 1000)));
  return text;
}

}  // namespace toplist::bench
