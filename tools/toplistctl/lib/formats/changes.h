#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace toplist::ctl {

/// One value of a trade that an import changes: a field of its record, a text or a figure.
struct ValueChange {
  std::string name;    ///< "status", "title", "rin60"
  std::string before;  ///< as a person reads it: texts in quotes
  std::string after;
};

/// What an import does to a trade.
struct TradeChange {
  enum class What { added, changed, removed } what = What::changed;
  std::int32_t id = 0;
  std::string domain;  ///< the one before, if there was one
  std::vector<ValueChange> values{};

  /// A line for each value, such as "101 alpine-trails.example: status 1 -> 0"; or one that says
  /// that the trade is added or removed.
  [[nodiscard]] std::string text() const;
};

std::size_t count_of(std::span<const TradeChange> changes, TradeChange::What what);

}  // namespace toplist::ctl
