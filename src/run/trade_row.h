#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "run/counters.h"

namespace toplist {

/// One active trade's statistics row.
struct TradeRow {
  std::string id;  ///< The trade's number as decimal text; the key of "d/t/sum" records.
  std::array<PeriodBlock, kPeriodCount> periods{};
  std::string domain;
  std::string url;
  std::int32_t mark = 0;  ///< 1 when thumbnails are required and the trade has none.
  /// The trade's columns from "d/tl/tl.a1", in file order: title, description, picture, then those
  /// of the column tags. Views into the text of that file, which the run keeps until it ends.
  std::vector<std::string_view> extra_columns;
  /// The order-by value of the toplist that was ranked last. In a run only rank_rows() sets it.
  /// Only rowBefore() reads it.
  std::string order_key;
};

}  // namespace toplist
