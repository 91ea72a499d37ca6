#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "support/rows.h"

namespace toplist::test {

/// Rank 0 has no columns, rank 1 plain ones, ranks 2 and 3 such as bring in tags.
class Render : public testing::Test {
 protected:
  Render() {
    for (const char* id : {"42", "7", "2", "3"}) rows_.push_back(make_row(id, "d.com"));
    for (TradeRow& row : rows_) row.url = "u";
    rows_[0].periods[kPeriod60].rin = -5;
    rows_[1].extra_columns = {"T", "D", "I", "c0", "c1"};
    rows_[2].extra_columns = {"%%tid_000%%", "50%", "100%%", "a%%att00_001%%b"};
    rows_[3].extra_columns = {"x%%tit_003%%", "%", "", "%%dom_009%%"};
    ranked_ = pointers_to<const TradeRow>(rows_);
  }

  std::vector<TradeRow> rows_;
  std::vector<const TradeRow*> ranked_;
};

}  // namespace toplist::test
