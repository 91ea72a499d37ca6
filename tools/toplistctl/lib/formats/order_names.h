#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The names of the 60 order-by values: a kind of figure and its period, such as "rin24",
/// "clk24/rin24" and "further1_24".
namespace toplist::ctl {

/// In the order of the values: that of "1" comes first.
std::vector<std::string> order_value_names();

/// The order-by value, "1" to "60", that `text` is or names.
std::optional<std::string> order_value_named(std::string_view text);

/// The name of an order-by value, such as "rin24" for "16". For any other text it is "rin24" as
/// well, because a run ranks by that.
std::string order_value_name(std::string_view order_by);

}  // namespace toplist::ctl
