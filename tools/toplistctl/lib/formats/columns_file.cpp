#include "toplistctl/lib/formats/columns_file.h"

#include <algorithm>
#include <array>
#include <span>

#include "run/statistics.h"
#include "toplistctl/lib/formats/sum_file.h"
#include "util/fields.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

constexpr std::array<std::string_view, kUsualColumns> kFirstNames{"title", "description",
                                                                  "picture"};
constexpr std::string_view kStem = "att";
constexpr std::string_view kNewHeader = "line|domain|";
constexpr std::string_view kNewLead = "\nline|";

/// How many columns there are up to the last that is not empty.
std::size_t filled(const Columns& columns) {
  const auto last = std::find_if(columns.rbegin(), columns.rend(),
                                 [](std::string_view column) { return !column.empty(); });
  return static_cast<std::size_t>(columns.rend() - last);
}

void append_line(std::string& file, std::string_view lead, std::string_view domain,
                 const Columns& columns, std::size_t width) {
  file.append(contains(lead, "\n") ? lead : kNewLead).append(domain) += kFieldSeparator;
  for (std::size_t i = 0; i < width; ++i) {
    if (i < columns.size()) file += columns[i];
    file += kFieldSeparator;
  }
}

}  // namespace

std::string column_name(std::size_t index) {
  if (index < kFirstNames.size()) return std::string(kFirstNames.at(index));
  const std::string number = std::to_string(index - kFirstNames.size());
  return std::string(kStem) + (number.size() < 2 ? "0" : "") + number;
}

std::optional<std::size_t> column_index(std::string_view name) {
  for (std::size_t i = 0; i < kNamedColumns; ++i) {
    if (column_name(i) == name) return i;
  }
  return std::nullopt;
}

bool same_columns(const Columns& a, const Columns& b) {
  const std::size_t count = filled(a);
  return count == filled(b) &&
         std::equal(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(count), b.begin());
}

ColumnsFile::ColumnsFile(std::string_view text) : text_(text) {
  const ExtraColumnFields fields = read_extra_column_fields(text);
  const std::size_t size = fields.group_size();
  if (size == 0) return;
  header_columns_ = width_ = size - 1;
  header_ = text.substr(0, behind(text, fields.kept[*fields.kept_in_header - 1]));
  std::size_t read = header_.size();
  std::span<const std::string_view> rest(fields.kept);
  rest = rest.subspan(*fields.kept_in_header);
  for (; rest.size() >= size; rest = rest.subspan(size)) {
    const std::string_view domain = rest.front();
    const auto [entry, is_first] = columns_.try_emplace(domain);
    if (is_first) {
      lines_.push_back({text.substr(read, begin_of(text, domain) - read), domain});
    }
    Columns& columns = entry->second;
    columns.insert(columns.end(), rest.begin() + 1,
                   rest.begin() + static_cast<std::ptrdiff_t>(size));
    width_ = std::max(width_, columns.size());
    read = behind(text, rest[size - 1]);
  }
  tail_ = text.substr(read);
}

const Columns& ColumnsFile::of(std::string_view domain) const {
  static const Columns kNone;
  const auto found = columns_.find(domain);
  return found == columns_.end() ? kNone : found->second;
}

std::string ColumnsFile::with(const std::vector<DomainColumns>& wanted, std::size_t new_columns,
                              std::string_view left) const {
  std::unordered_map<std::string_view, const Columns*> given;
  bool changes = text_.empty() || (!left.empty() && columns_.contains(left));
  for (const auto& [domain, columns] : wanted) {
    given.emplace(domain, &columns);
    changes = changes || !same_columns(columns, of(domain));
  }
  if (!changes) return std::string(text_);

  const auto columns_for = [&](std::string_view domain) -> const Columns& {
    const auto found = given.find(domain);
    return found == given.end() ? of(domain) : *found->second;
  };
  std::size_t width = header_.empty() ? new_columns : header_columns_;
  for (const auto& [domain, columns] : wanted) width = std::max(width, filled(columns));
  for (const Line& line : lines_) width = std::max(width, filled(columns_for(line.domain)));

  std::string file(header_.empty() ? kNewHeader : header_);
  for (std::size_t i = header_columns_; i < width; ++i)
    file.append(column_name(i)) += kFieldSeparator;
  for (const Line& line : lines_) {
    if (!left.empty() && line.domain == left) continue;
    append_line(file, line.lead, line.domain, columns_for(line.domain), width);
  }
  for (const auto& [domain, columns] : wanted) {
    if (columns_.contains(domain) || filled(columns) == 0) continue;
    append_line(file, kNewLead, domain, columns, width);
  }
  file += tail_;
  if (!file.ends_with(kLineSeparator)) file += kLineSeparator;
  return file;
}

}  // namespace toplist::ctl
