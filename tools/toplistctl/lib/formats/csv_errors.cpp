#include "toplistctl/lib/formats/csv_errors.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace toplist::ctl {

void CsvErrors::add(const CsvPlace& place, std::string_view what) {
  if (++count_ > kMostTold) return;
  std::string text = "line " + std::to_string(place.line);
  if (place.column > 0) text += ", column " + std::to_string(place.column);
  if (!place.name.empty()) text += " (" + std::string(place.name) + ")";
  first_.push_back({place.line, place.column, text.append(": ").append(what)});
}

std::vector<std::string> CsvErrors::told() const {
  std::vector<Diagnostic> findings = first_;
  std::stable_sort(findings.begin(), findings.end(), [](const Diagnostic& a, const Diagnostic& b) {
    return std::tie(a.line, a.column) < std::tie(b.line, b.column);
  });
  std::vector<std::string> texts;
  texts.reserve(findings.size());
  for (Diagnostic& finding : findings) texts.push_back(std::move(finding.text));
  return texts;
}

}  // namespace toplist::ctl
