#include "toplist/alternatives.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <string_view>

#include "util/fields.h"
#include "util/text.h"

namespace toplist {
namespace {

constexpr char kAlternativeSeparator = ';';

/// The number that the generator, seeded with the current second, draws first.
class SecondsDraw {
 public:
  std::size_t draw() {
    const std::time_t now = std::time(nullptr);
    if (now != second_) {
      second_ = now;
      std::srand(static_cast<unsigned>(now));
      // No other generator: pages take their picks from this one (contract: same-second).
      drawn_ = static_cast<std::size_t>(std::rand());
    }
    return drawn_;
  }

 private:
  std::time_t second_ = -1;
  std::size_t drawn_ = 0;
};

template <typename Draw>
void pick_by(Draw draw, std::span<TradeRow> rows) {
  for (TradeRow& row : rows) {
    for (std::string_view& column : row.extra_columns) {
      if (!contains(column, ";")) continue;  // most have one piece, or none
      const std::size_t count = alternative_count(column);
      FieldReader pieces(column, kAlternativeSeparator);
      pieces.skip(draw() % count);
      pieces.next(column);
    }
  }
}

}  // namespace

std::size_t alternative_count(std::string_view column) {
  if (column.empty()) return 1;
  // A separator at the end starts no further piece.
  const auto separators = std::count(column.begin(), column.end() - 1, kAlternativeSeparator);
  return static_cast<std::size_t>(separators) + 1;
}

void pick_alternatives(std::span<TradeRow> rows) {
  SecondsDraw generator;
  pick_by([&generator] { return generator.draw(); }, rows);
}

void pick_alternatives(std::span<TradeRow> rows, std::size_t drawn) {
  pick_by([drawn] { return drawn; }, rows);
}

}  // namespace toplist
