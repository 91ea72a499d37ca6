#include "toplistctl/lib/templates/template_check.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "render/render.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/templates/template_walk.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

constexpr std::size_t kTagTextShown = 20;
constexpr std::size_t kShortName = 3;

bool all_digits(std::string_view text) { return std::all_of(text.begin(), text.end(), is_digit); }

/// The tag as it stands in the line.
std::string_view tag_text(const TagSpot& tag) {
  if (!tag.tag) return tag.text.substr(0, kTagTextShown);
  return tag.text.substr(0, tag.tag->name.size() == kShortName ? kShortTagLength : kLongTagLength);
}

std::string_view rank_text(const TagSpot& tag) {
  return tag.text.substr(kTagMark.size() + tag.tag->name.size() + 1, kRankDigits);
}

/// Finds the faults of one template.
class TemplateCheck {
 public:
  TemplateCheck(const TemplateUse& use, const PlaceOf& place_of, Diagnostics& findings)
      : use_(use), place_of_(place_of), findings_(findings) {}

  void check(std::string_view text) {
    walk_template(text, use_.shown,
                  {.tag = [this](const TagSpot& tag) { check_tag(tag); },
                   .stray = [this](const StraySpot& stray) { add_stray(stray); },
                   .open_block = [this](std::size_t line) { add_open_block(line); }});
    for (const auto& [key, repeated] : repeated_) {
      std::string& message = findings_[repeated.finding].message;
      if (key.first == &kinds::kTooManyTags) {
        message = "left unfilled from here on: " + count_of(repeated.times, "tag");
      } else if (repeated.times > 1) {
        message += fmt::format(", and {} more", repeated.times - 1);
      }
    }
    if (unfilled_lines_ > 0) {
      findings_[*malformed_].message +=
          ", which leaves tags unfilled on " + count_of(unfilled_lines_, "later line");
    }
  }

 private:
  /// A finding that stands for all tags of a template with the same fault.
  struct Repeated {
    std::size_t finding;
    std::size_t times;
  };

  /// Whether the fault has not been reported at this place; `key` tells faults of a kind apart.
  bool is_new(const Kind& kind, const std::string& key, const Place& at) {
    return told_.emplace(&kind, key, at).second;
  }

  void add(const Kind& kind, const Place& at, std::string message) {
    if (is_new(kind, "", at)) findings_.push_back({&kind, at, std::move(message)});
  }

  /// Adds the first tag with this fault; those that follow are counted.
  void add_once(const Kind& kind, const std::string& key, const TagSpot& tag) {
    const Place at = place_of_(tag.line, tag.column);
    if (!is_new(kind, key, at)) return;
    const auto [entry, is_first] =
        repeated_.try_emplace({&kind, key}, Repeated{findings_.size(), 0});
    ++entry->second.times;
    if (is_first) findings_.push_back({&kind, at, in_quotes(tag_text(tag))});
  }

  void add_stray(const StraySpot& stray) {
    add(kinds::kStraySpot, place_of_(stray.line, stray.column),
        fmt::format("\"%%\" with fewer than {} characters from it to the end of the line",
                    kShortTagLength));
  }

  void add_malformed(const TagSpot& tag) {
    if (!malformed_) malformed_ = findings_.size();
    add(kinds::kMalformedTag, place_of_(tag.line, tag.column),
        in_quotes(tag_text(tag)) + " is not a tag" + (tag.from_value ? "; it is in a value" : ""));
  }

  void add_open_block(std::size_t line) {
    Place at = place_of_(line, 1);
    at.column = 0;
    add(kinds::kOpenBlock, at, "\"<tlxt>\" is not closed");
  }

  void check_tag(const TagSpot& tag) {
    const bool is_first_of_line = std::exchange(last_line_, tag.line) != tag.line;
    if (tag.passes > kPassLimit + 1 && !is_first_of_line) add_once(kinds::kTooManyTags, "", tag);
    if (malformed_ && !is_first_of_line && std::exchange(unfilled_line_, tag.line) != tag.line) {
      ++unfilled_lines_;
    }
    if (!tag.tag) return add_malformed(tag);
    if (tag.from_value) return;  // the value is at fault, and reported where it comes from
    check_name(tag);
    check_rank(tag);
  }

  void check_name(const TagSpot& spot) {
    const Tag& tag = *spot.tag;
    if (!has_known_name(tag)) return add_once(kinds::kUnknownName, std::string(tag.name), spot);
    const auto entry = column_entry(tag);
    if (!entry) return;
    if (tag.name.size() == kShortName || !all_digits(tag.name.substr(kShortName))) {
      add_once(kinds::kOddColumn, std::string(tag.name), spot);
    } else if (use_.columns > 0 && *entry >= static_cast<std::int64_t>(use_.columns)) {
      add_once(kinds::kMissingColumn, std::string(tag.name), spot);
    }
  }

  void check_rank(const TagSpot& tag) {
    if (!all_digits(rank_text(tag))) return add_once(kinds::kOddRank, "", tag);
    // How many trades pass the toplist's settings changes from run to run; this many never do.
    if (use_.trades > 0 && tag.tag->rank >= static_cast<std::int64_t>(use_.trades)) {
      add_once(kinds::kRankBeyondList, "", tag);
    }
  }

  const TemplateUse& use_;
  const PlaceOf& place_of_;
  Diagnostics& findings_;
  std::size_t last_line_ = 0;
  std::optional<std::size_t> malformed_;  ///< the finding of the first malformed tag
  std::size_t unfilled_line_ = 0;         ///< the last line that it leaves unfilled,
  std::size_t unfilled_lines_ = 0;        ///< and how many there are
  std::set<std::tuple<const Kind*, std::string, Place>> told_;
  std::map<std::pair<const Kind*, std::string>, Repeated> repeated_;
};

}  // namespace

TemplateUse use_without_site() {
  static const TradeRow row;
  static const std::vector<const TradeRow*> rows(kRankCount, &row);
  return {.shown = rows};
}

TemplateUse use_in(const SiteView& site, const ToplistView& toplist) {
  TemplateUse use{.shown = toplist.passing, .trades = site.run.rows.size()};
  for (const TradeRow& row : site.run.rows) {
    use.columns = std::max(use.columns, row.extra_columns.size());
  }
  return use;
}

void check_template(std::string_view text, const TemplateUse& use, const PlaceOf& place_of,
                    Diagnostics& findings) {
  TemplateCheck(use, place_of, findings).check(text);
}

bool blocks_lines(const Diagnostic& finding) {
  constexpr std::array kBlocking{&kinds::kStraySpot, &kinds::kMalformedTag, &kinds::kTooManyTags};
  return std::find(kBlocking.begin(), kBlocking.end(), finding.kind) != kBlocking.end();
}

}  // namespace toplist::ctl
