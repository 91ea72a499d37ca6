#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "toplistctl/check/check.h"
#include "toplistctl/check/kinds.h"
#include "toplistctl/check/template_walk.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

constexpr std::size_t kTagTextShown = 20;
constexpr std::size_t kRankDigits = 3;
constexpr std::size_t kShortName = 3;

bool all_digits(std::string_view text) { return std::all_of(text.begin(), text.end(), is_digit); }

/// The tag as it stands in the line.
std::string_view tag_text(const TagSpot& spot) {
  if (!spot.tag) return spot.text.substr(0, kTagTextShown);
  return spot.text.substr(0,
                          spot.tag->name.size() == kShortName ? kShortTagLength : kLongTagLength);
}

std::string_view rank_text(const TagSpot& spot) {
  return spot.text.substr(kTagMark.size() + spot.tag->name.size() + 1, kRankDigits);
}

/// Finds the faults of one template.
class TemplateCheck {
 public:
  TemplateCheck(const SiteData& site, std::string path, Findings& findings)
      : path_(std::move(path)), findings_(findings), trades_(site.rows.size()) {
    for (const TradeRow& row : site.rows) columns_ = std::max(columns_, row.extra_columns.size());
  }

  void check(std::string_view text, RankedRows shown) {
    walk_template(text, shown,
                  {.tag = [this](const TagSpot& spot) { check_tag(spot); },
                   .stray = [this](const StrayMark& stray) { add_stray(stray); },
                   .open_block =
                       [this](std::size_t line) {
                         add(kinds::kOpenBlock, {.line = line}, "\"<tlxt>\" is not closed");
                       }});
    for (const auto& [key, repeated] : repeated_) {
      if (repeated.times == 1) continue;
      findings_[repeated.finding].message +=
          ", and " + std::to_string(repeated.times - 1) + " more";
    }
  }

 private:
  /// A finding that stands for all tags of a template with the same fault.
  struct Repeated {
    std::size_t finding;
    std::size_t times;
  };

  void add(const Kind& kind, const Place& place, std::string message) {
    findings_.push_back({&kind, path_, place, std::move(message)});
  }

  void add_stray(const StrayMark& stray) {
    add(kinds::kStrayMark, {.line = stray.line, .column = stray.column},
        "\"%%\" with fewer than 11 characters from it to the end of the line");
  }

  /// Adds the first tag with this fault; those that follow are counted. `key` tells faults apart.
  void add_once(const Kind& kind, const std::string& key, const TagSpot& spot) {
    const auto [entry, is_new] =
        repeated_.try_emplace({kind.name, key}, Repeated{findings_.size(), 0});
    ++entry->second.times;
    if (is_new) add(kind, {.line = spot.line, .column = spot.column}, in_quotes(tag_text(spot)));
  }

  void check_tag(const TagSpot& spot) {
    const bool is_first_of_line = std::exchange(last_line_, spot.line) != spot.line;
    if (spot.passes > kPassLimit + 1 && !is_first_of_line) {
      add_once(kinds::kTooManyTags, "", spot);
    }
    if (!spot.tag) {
      add(kinds::kMalformedTag, {.line = spot.line, .column = spot.column},
          in_quotes(tag_text(spot)) + (spot.from_value ? ", put there by a value" : ""));
      return;
    }
    if (spot.from_value) return;  // the value is at fault, and reported where it comes from
    check_name(spot);
    check_rank(spot);
  }

  void check_name(const TagSpot& spot) {
    const Tag& tag = *spot.tag;
    if (!has_known_name(tag)) return add_once(kinds::kUnknownName, std::string(tag.name), spot);
    const auto entry = column_entry(tag);
    if (!entry) return;
    if (tag.name.size() == kShortName || !all_digits(tag.name.substr(kShortName))) {
      add_once(kinds::kOddColumn, std::string(tag.name), spot);
    } else if (columns_ > 0 && *entry >= static_cast<std::int64_t>(columns_)) {
      add_once(kinds::kMissingColumn, std::string(tag.name), spot);
    }
  }

  void check_rank(const TagSpot& spot) {
    if (!all_digits(rank_text(spot))) return add_once(kinds::kOddRank, "", spot);
    // How many trades pass the toplist's settings changes from run to run; this many never do.
    if (trades_ > 0 && spot.tag->rank >= static_cast<std::int64_t>(trades_)) {
      add_once(kinds::kRankBeyondList, "", spot);
    }
  }

  const std::string path_;
  Findings& findings_;
  const std::size_t trades_;
  std::size_t columns_ = 0;
  std::size_t last_line_ = 0;
  std::map<std::pair<std::string_view, std::string>, Repeated> repeated_;
};

}  // namespace

void check_templates(const SiteData& site, Findings& findings) {
  std::set<std::string> done;
  for (const ToplistView& toplist : site.toplists) {
    const std::string& path = toplist.definition->template_path;
    if (!done.insert(path).second) continue;
    const SiteFile file(path);
    if (file.is_open()) TemplateCheck(site, path, findings).check(file.text(), toplist.passing);
  }
}

}  // namespace toplist::ctl
