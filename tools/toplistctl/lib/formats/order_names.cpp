#include "toplistctl/lib/formats/order_names.h"

#include <fmt/core.h>

#include <algorithm>

#include "run/counters.h"
#include "toplist/ranking.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

constexpr std::size_t kFallback = 16;  ///< what a run ranks by if it does not know the value

std::string name_of(std::size_t value) {
  const std::string_view kind = kOrderKinds[(value - 1) % kOrderKinds.size()].name;
  const std::string_view period = kPeriodNames[(value - 1) / kOrderKinds.size()];
  if (kind.starts_with("further")) return fmt::format("{}_{}", kind, period);
  const std::size_t slash = kind.find('/');
  if (slash == std::string_view::npos) return fmt::format("{}{}", kind, period);
  return fmt::format("{}{}{}{}", kind.substr(0, slash), period, kind.substr(slash), period);
}

}  // namespace

std::vector<std::string> order_value_names() {
  std::vector<std::string> names(kPeriodNames.size() * kOrderKinds.size());
  std::generate(names.begin(), names.end(), [value = 0U]() mutable { return name_of(++value); });
  return names;
}

std::optional<std::string> order_value_named(std::string_view text) {
  if (is_order_value(text)) return std::string(text);
  const std::vector<std::string> names = order_value_names();
  const auto at = std::find(names.begin(), names.end(), text);
  if (at == names.end()) return std::nullopt;
  return std::to_string(at - names.begin() + 1);
}

std::string order_value_name(std::string_view order_by) {
  return name_of(is_order_value(order_by) ? static_cast<std::size_t>(parse_int32(order_by))
                                          : kFallback);
}

}  // namespace toplist::ctl
