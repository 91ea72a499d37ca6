#include "toplistctl/lib/formats/order_names.h"

#include <algorithm>

#include "toplist/ranking.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

/// "clk/rin" of "24" is "clk24/rin24", "further1" is "further1_24".
std::string name_of(std::string_view kind, std::string_view period) {
  std::string name(kind);
  if (kind.starts_with("further")) return name.append("_").append(period);
  if (const std::size_t slash = name.find('/'); slash != std::string::npos) {
    name.insert(slash, period);
  }
  return name.append(period);
}

std::string name_of_value(std::size_t value) {
  return name_of(kOrderKinds[(value - 1) % kOrderKinds.size()],
                 kPeriodNames[(value - 1) / kOrderKinds.size()]);
}

}  // namespace

std::optional<std::string> order_value_named(std::string_view text) {
  if (is_order_value(text)) return std::string(text);
  const std::vector<std::string> names = order_value_names();
  const auto at = std::find(names.begin(), names.end(), text);
  if (at == names.end()) return std::nullopt;
  return std::to_string(at - names.begin() + 1);
}

std::vector<std::string> order_value_names() {
  std::vector<std::string> names;
  for (std::size_t value = 1; value <= kPeriodNames.size() * kOrderKinds.size(); ++value) {
    names.push_back(name_of_value(value));
  }
  return names;
}

std::string order_value_name(std::string_view order_by) {
  return is_order_value(order_by) ? name_of_value(static_cast<std::size_t>(parse_int32(order_by)))
                                  : name_of(kOrderKinds[0], kPeriodNames[kPeriod24]);
}

}  // namespace toplist::ctl
