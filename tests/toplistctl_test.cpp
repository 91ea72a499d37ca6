// The built companion command, as it is used in a shell.

#include <gtest/gtest.h>

#include <string>

#include "support/rows.h"
#include "support/site.h"
#include "toplist/ranking.h"
#include "toplistctl/lib/formats/order_names.h"
#include "toplistctl/lib/output/console.h"

namespace toplist::test {
namespace {

TEST(Toplistctl, SessionsPrintWhatIsExpected) { expect_sessions("sessions.txt"); }

TEST(Toplistctl, WhatATerminalWouldActUponIsMasked) {
  const char* text = "a\x1b[1m \xC2\x9B \xC3\xA9\t\r\x7F\n";
  EXPECT_EQ(ctl::printable(text), "a?[1m ? \xC3\xA9????");
  EXPECT_EQ(ctl::printable_lines(text), "a?[1m ? \xC3\xA9\t??\n");
}

/// Makes the figure of this name larger than that of a new row.
void raise(TradeRow& row, const std::string& name, std::size_t period) {
  if (name.starts_with("further")) {
    row.periods[period].further[static_cast<std::size_t>(name[7] - '1')] = 1;
    return;
  }
  *find_counter(row, name.substr(0, 5)) = 2;
  if (name.size() > 5) *find_counter(row, name.substr(6)) = 1;
}

TEST(OrderNames, NameWhatARunRanksBy) {
  for (std::size_t value = 1; value <= 60; ++value) {
    const std::string order_by = std::to_string(value);
    const std::string name = ctl::order_value_name(order_by);
    EXPECT_EQ(ctl::order_value_named(name), order_by);
    EXPECT_EQ(ctl::order_value_named(order_by), order_by);
    TradeRow higher, lower;
    higher.order_key = lower.order_key = order_by;
    raise(higher, name, (value - 1) / 15);
    EXPECT_EQ(rowBefore(higher, lower), value != 57) << name;
    EXPECT_EQ(rowBefore(lower, higher), value == 57) << name;
  }
  EXPECT_EQ(ctl::order_value_name("061"), "rin24");
  for (const char* none : {"", "0", "61", "rin", "rec24", "rin25", "further4_24"}) {
    EXPECT_EQ(ctl::order_value_named(none), std::nullopt) << none;
  }
}

}  // namespace
}  // namespace toplist::test
