#include <algorithm>
#include <map>
#include <string>

#include "render/tag.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "util/fields.h"
#include "util/number.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

void check_size(std::size_t bytes, const SiteView& site, Diagnostics& findings) {
  constexpr std::size_t kRecordBytes = sizeof(TradeRecord);
  const std::size_t count = site.run.trades.size();
  if (const std::size_t cut = bytes % kRecordBytes; cut != 0) {
    add(findings, kinds::kCutRecord, {.file = kTradesPath, .record = count},
        "the record has {} of {} bytes", cut, kRecordBytes);
  }
  if (count < kFewestTrades) {
    add(findings, kinds::kTooFewRecords, {.file = kTradesPath},
        "the file has {}, but a run needs {}", count_of(count, "record"), kFewestTrades);
  } else if (std::none_of(site.run.trades.begin(), site.run.trades.end(), is_active)) {
    add(findings, kinds::kNoActiveTrades, {.file = kTradesPath}, "none of the {} has status 1",
        count_of(count, "trade"));
  }
}

/// Whether this can be a part of a host name, between two dots. The standards do not allow "_", but
/// some hosts on the web have it.
bool is_host_label(std::string_view label) {
  constexpr std::size_t kLongest = 63;
  const auto fits = [](char c) {
    return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '_';
  };
  return !label.empty() && label.size() <= kLongest && !label.starts_with('-') &&
         !label.ends_with('-') && std::all_of(label.begin(), label.end(), fits);
}

bool is_host_name(std::string_view name) {
  if (name.ends_with('.')) return false;
  FieldReader labels(name, '.');
  for (std::string_view label; labels.next(label);) {
    if (!is_host_label(label)) return false;
  }
  return true;
}

/// What is wrong with a domain, if anything.
std::string_view domain_fault(std::string_view domain) {
  if (domain.empty()) return "is empty";
  if (domain.size() >= sizeof(TradeRecord::domain)) return "fills its field to the end";
  if (contains(domain, "/")) return "holds a \"/\"";
  if (domain.find_first_of("\r\n\t|") != std::string_view::npos) {
    return "contains a line break, tab or \"|\"";
  }
  return is_host_name(domain) ? "" : "is not a host name";
}

/// Checks the active trades, one by one.
class ActiveTrades {
 public:
  explicit ActiveTrades(Diagnostics& findings) : findings_(findings) {}

  void check(const TradeRecord& trade, std::size_t record) {
    const Place place{.file = kTradesPath, .record = record};
    const std::string_view url = url_of(trade);
    if (contains(url, kTagMark)) {
      add(findings_, kinds::kMarkInValue, place, "the address \"{}\" holds \"%%\"", url);
    }
    if (holds_markup(url)) {
      add(findings_, kinds::kMarkupInValue, place, "the address \"{}\" holds HTML", url);
    }
    check_unique(ids_, trade.trade_id, kinds::kDuplicateId, "number", place);
    const std::string_view domain = domain_of(trade);
    if (const std::string_view fault = domain_fault(domain); !fault.empty()) {
      add(findings_, kinds::kBadDomain, place, "the domain {}", fault);
    } else {
      check_unique(domains_, domain, kinds::kDuplicateDomain, "domain", place);
    }
  }

 private:
  template <typename Value>
  using Records = std::map<Value, std::size_t>;

  template <typename Value>
  void check_unique(Records<Value>& records, const Value& value, const Kind& kind, const char* what,
                    const Place& place) {
    const auto [first, is_new] = records.emplace(value, place.record);
    if (is_new) return;
    add(findings_, kind, place, "record {} has the same {}, {}", first->second, what, value);
  }

  Diagnostics& findings_;
  Records<std::int32_t> ids_;
  Records<std::string_view> domains_;
};

}  // namespace

void check_trades(const SiteView& site, Diagnostics& findings) {
  const auto bytes = read_input(kTradesPath, kinds::kMissingFile, findings);
  if (!bytes) return;
  check_size(bytes->size(), site, findings);
  ActiveTrades active(findings);
  for (std::size_t i = 0; i < site.run.trades.size(); ++i) {
    if (is_active(site.run.trades[i])) active.check(site.run.trades[i], i + 1);
  }
}

}  // namespace toplist::ctl
