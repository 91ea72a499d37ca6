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

inline std::string milliseconds(double seconds) {
  std::string text(32, '\0');
  text.resize(
      static_cast<std::size_t>(std::snprintf(text.data(), text.size(), "%.2f ms", seconds * 1000)));
  return text;
}

/// A table of ratios on standard output, which remembers whether the goals were reached.
class Table {
 public:
  explicit Table(const char* title) {
    std::printf("\n%-44s %12s %12s %7s\n", title, "measured", "against", "ratio");
  }

  /// Prints one figure: what was measured, against what, and their ratio.
  /// `limit` is the ratio to stay within; 0 when the row only informs.
  void add(const std::string& what, const std::string& measured, const std::string& against,
           double ratio, double limit) {
    std::printf("%-44s %12s %12s %7.2f", what.c_str(), measured.c_str(), against.c_str(), ratio);
    const bool reached = limit == 0 || ratio <= limit;
    if (limit > 0) std::printf("  <= %-5g %s", limit, reached ? "ok" : "NOT REACHED");
    std::printf("\n");
    std::fflush(stdout);
    all_reached_ = all_reached_ && reached;
  }

  void add_times(const std::string& what, double measured, double against, double limit) {
    add(what, milliseconds(measured), milliseconds(against), measured / against, limit);
  }

  /// The exit status: 1 when a goal was missed.
  [[nodiscard]] int status() const { return all_reached_ ? 0 : 1; }

 private:
  bool all_reached_ = true;
};

}  // namespace toplist::bench
