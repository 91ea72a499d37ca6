#include "toplistctl/lib/formats/sum_file.h"

#include <iterator>
#include <optional>
#include <utility>

#include "toplistctl/lib/formats/site_writer.h"
#include "util/fields.h"
#include "util/number.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

using Record = std::array<std::string_view, kSumFields>;
constexpr std::size_t kIdField = 1;

/// The period of a field, and the field's position in it.
struct FieldPlace {
  std::size_t period;
  std::size_t field;
};
constexpr FieldPlace place_of(std::size_t index) {
  const std::size_t behind_id = index - kFieldsBeforePeriods;
  return {behind_id / kPeriodFields, behind_id % kPeriodFields};
}

/// Builds the new text, record by record.
class SumEditor {
 public:
  SumEditor(std::string_view text, const SumEdit& edit) : text_(text), edit_(edit) {}

  std::string edited(const std::vector<std::string>& new_ids) {
    FieldReader fields(text_);
    Record record;
    std::size_t count = 0;
    while ((count = next_record(fields, record)) == kSumFields) add(record, count);
    if (!file_.empty() && !file_.ends_with(kFieldSeparator)) file_ += kFieldSeparator;
    for (const std::string& id : new_ids) add_new(id);
    if (count > 0) add(record, count);  // a cut one, or the last line break
    if (!file_.ends_with(kLineSeparator)) file_ += kLineSeparator;
    return std::move(file_);
  }

 private:
  void add(const Record& record, std::size_t count) {
    if (const auto text = changed_record(record, count)) {
      file_ += *text;
    } else {
      const std::size_t begin = begin_of(text_, record[0]);
      file_ += text_.substr(begin, behind(text_, record[count - 1]) - begin);
    }
  }

  void add_new(const std::string& id) {
    if (!file_.empty()) file_ += kLineSeparator;
    append_sum(file_, {parse_int32(id), edit_.values.at(id)});
    file_.pop_back();  // the line break belongs to the next record
  }

  /// The record with its new figures, whole; nothing when it has them already.
  [[nodiscard]] std::optional<std::string> changed_record(const Record& record,
                                                          std::size_t count) const {
    const auto values = edit_.values.find(std::string(record[kIdField]));
    if (values == edit_.values.end()) return std::nullopt;
    std::string text;
    bool changed = false;
    for (std::size_t i = 0; i < kSumFields; ++i) {
      const auto number = new_number(values->second, i, record.at(i));
      if (number) append_number(text, *number);
      if (!number) text += i < count ? record.at(i) : "0";
      text += kFieldSeparator;
      changed = changed || number;
    }
    return changed ? std::optional(std::move(text)) : std::nullopt;
  }

  /// The new value of the field; nothing if it stays.
  [[nodiscard]] std::optional<std::int32_t> new_number(RecentPeriods values, std::size_t index,
                                                       std::string_view field) const {
    if (index < kFieldsBeforePeriods) return std::nullopt;
    const FieldPlace place = place_of(index);
    if (!edit_.given.at(place.period).at(place.field)) return std::nullopt;
    const std::int32_t number = *figure_at(values.at(place.period), place.field);
    return number == parse_int32(field) ? std::nullopt : std::optional(number);
  }

  std::string_view text_;
  const SumEdit& edit_;
  std::string file_;
};

/// Whether the record holds all figures that are given.
bool has_figures(RecentPeriods record, RecentPeriods wanted, const SumEdit& edit) {
  for (std::size_t i = kFieldsBeforePeriods; i < kSumFields; ++i) {
    const FieldPlace place = place_of(i);
    if (edit.given.at(place.period).at(place.field) &&
        *figure_at(record.at(place.period), place.field) !=
            *figure_at(wanted.at(place.period), place.field)) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::int32_t* figure_at(PeriodBlock& block, std::size_t field) {
  if (field < kFileOrder.size()) return &(block.*kFileOrder.at(field));
  return field < kFirstFurther ? nullptr : &block.further.at(field - kFirstFurther);
}

void read_sum(std::string_view text,
              const std::function<RecentPeriods*(std::string_view id)>& find) {
  FieldReader fields(text);
  Record record;
  while (const std::size_t count = next_record(fields, record)) {
    RecentPeriods* const periods = count > kIdField ? find(record[kIdField]) : nullptr;
    if (periods == nullptr) continue;
    for (std::size_t i = kFieldsBeforePeriods; i < count; ++i) {
      const FieldPlace place = place_of(i);
      std::int32_t* const figure = figure_at(periods->at(place.period), place.field);
      if (figure != nullptr) *figure = parse_int32(record.at(i));
    }
  }
}

std::unordered_map<std::string, RecentPeriods> stored_figures(std::string_view text,
                                                              const SumEdit& edit) {
  std::unordered_map<std::string, RecentPeriods> stored;
  read_sum(text, [&](std::string_view id) -> RecentPeriods* {
    const auto wanted = edit.values.find(std::string(id));
    return wanted == edit.values.end() ? nullptr : &stored[wanted->first];
  });
  return stored;
}

std::string edited_sum(std::string_view text, const SumEdit& edit) {
  const auto stored = stored_figures(text, edit);
  std::vector<std::string> new_ids;
  std::copy_if(edit.listed.begin(), edit.listed.end(), std::back_inserter(new_ids),
               [&stored](const std::string& id) { return !stored.contains(id); });
  const bool is_right = std::all_of(stored.begin(), stored.end(), [&edit](const auto& entry) {
    return has_figures(entry.second, edit.values.at(entry.first), edit);
  });
  if (is_right && new_ids.empty()) return std::string(text);
  return SumEditor(text, edit).edited(new_ids);
}

}  // namespace toplist::ctl
