#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "run/trade_row.h"

namespace toplist::ctl {

/// The periods' suffixes, in the order of TradeRow::periods.
inline constexpr std::array<std::string_view, kPeriodCount> kPeriodNames{"60", "24", "07", "99"};

/// What the order-by values of a period name, in their order.
inline constexpr std::array<std::string_view, 15> kOrderKinds{
    "rin",     "uin",     "out",     "clk",     "cef",      "ctg",      "ctt",      "clk/rin",
    "cef/uin", "cef/out", "ctt/out", "out/rin", "further1", "further2", "further3",
};

/// The order-by value, "1" to "60", that `text` is or names: "16", "rin24", "clk24/rin24",
/// "further1_24".
std::optional<std::string> order_value_named(std::string_view text);

/// The names of the order-by values, in their order.
std::vector<std::string> order_value_names();

/// The name of an order-by value, such as "rin24" for "16". That of "16" for any other text, which
/// is what a run ranks by.
std::string order_value_name(std::string_view order_by);

}  // namespace toplist::ctl
