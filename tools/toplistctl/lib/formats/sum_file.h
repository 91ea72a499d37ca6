#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "run/statistics.h"
#include "run/trade_row.h"

/// "d/t/sum" for code that changes single figures in it.
namespace toplist::ctl {

/// Where a field, a view into `text`, begins in it.
inline std::size_t begin_of(std::string_view text, std::string_view field) {
  return static_cast<std::size_t>(field.data() - text.data());
}

/// The position after the field and its separator.
inline std::size_t behind(std::string_view text, std::string_view field) {
  return std::min(begin_of(text, field) + field.size() + 1, text.size());
}

inline constexpr std::size_t kRecentPeriods = 3;
using RecentPeriods = std::array<PeriodBlock, kRecentPeriods>;  ///< 60, 24 and 07

/// Fields before the periods, and of each period: the counters, unread ones, further values.
inline constexpr std::size_t kFieldsBeforePeriods = 2;
inline constexpr std::size_t kPeriodFields = (kSumFields - kFieldsBeforePeriods) / kRecentPeriods;
inline constexpr std::size_t kFirstFurther = kPeriodFields - PeriodBlock{}.further.size();

/// A figure of a period, and its field there.
struct Figure {
  std::string_view name;
  std::size_t field;
};

/// All figures that the file holds of a period, in the order of CSV columns.
inline constexpr auto kFigures = [] {
  std::array<Figure, kCounters.size() + kFurtherNames.size()> figures{};
  Figure* figure = figures.data();
  for (const CounterEntry& counter : kCounters) *figure++ = {counter.name, counter.file_position};
  for (std::size_t i = 0; i < kFurtherNames.size(); ++i) {
    *figure++ = {kFurtherNames[i], kFirstFurther + i};
  }
  return figures;
}();

/// The figure in that field of a period; nullptr for an unread field.
std::int32_t* figure_at(PeriodBlock& block, std::size_t field);

/// Stores the figures of each record where `find` says for its id; nullptr skips the record.
/// Missing fields of a cut record change nothing.
void read_sum(std::string_view text,
              const std::function<RecentPeriods*(std::string_view id)>& find);

/// What is to change in the file.
struct SumEdit {
  using Fields = std::array<bool, kPeriodFields>;

  std::array<Fields, kRecentPeriods> given{};             ///< which figures are
  std::unordered_map<std::string, RecentPeriods> values;  ///< by id; others keep theirs
  std::vector<std::string> listed;  ///< ids that get a record when they have none
};

/// The figures that the text holds, by id, of the ids in `edit.values` that have a record.
std::unordered_map<std::string, RecentPeriods> stored_figures(std::string_view text,
                                                              const SumEdit& edit);

/// The file's text with these figures; unchanged if it already has them.
///
/// Fields with the right number, unread fields and whole records of other ids stay byte for byte.
/// New records come after the last complete one.
std::string edited_sum(std::string_view text, const SumEdit& edit);

}  // namespace toplist::ctl
