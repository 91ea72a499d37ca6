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

constexpr std::size_t kRecordBytes = sizeof(TradeRecord);

void check_size(const SiteFile& file, const SiteView& site, Diagnostics& findings) {
  const std::size_t count = site.run.trades.size();
  const std::size_t cut = file.text().size() % kRecordBytes;
  if (cut != 0) {
    findings.push_back(
        {&kinds::kCutRecord,
         {.file = kTradesPath, .record = count},
         "holds " + std::to_string(cut) + " of " + std::to_string(kRecordBytes) + " bytes"});
  }
  if (count < kFewestTrades) {
    findings.push_back(
        {&kinds::kTooFewRecords,
         {.file = kTradesPath},
         "holds " + count_of(count, "record") + ", a run needs " + std::to_string(kFewestTrades)});
  } else if (site.run.rows.empty()) {
    findings.push_back({&kinds::kNoActiveTrades,
                        {.file = kTradesPath},
                        "none of the " + count_of(count, "trade") + " has status 1"});
  }
}

/// Finds values that an earlier active trade has as well.
template <typename Value>
class Duplicates {
 public:
  Duplicates(const Kind& kind, const char* what) : kind_(kind), what_(what) {}

  void add(const Value& value, const std::string& text, std::size_t record, Diagnostics& findings) {
    const auto [first, is_new] = first_.emplace(value, record);
    if (is_new) return;
    findings.push_back({&kind_,
                        {.file = kTradesPath, .record = record},
                        what_ + text + " is also that of record " + std::to_string(first->second)});
  }

 private:
  const Kind& kind_;
  const std::string what_;
  std::map<Value, std::size_t> first_;
};

/// Whether this may stand between two dots of a host name. The underscore is no host name's by the
/// book, but name servers and the web know hosts that have it.
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
  if (domain.empty()) return "the domain is empty";
  if (domain.size() >= sizeof(TradeRecord::domain)) return "the domain fills its field to the end";
  if (domain.find('/') != std::string_view::npos) return "the domain holds a \"/\"";
  if (domain.find_first_of("\r\n\t|") != std::string_view::npos) {
    return "the domain holds a line break, tab or \"|\"";
  }
  if (!is_host_name(domain)) return "the domain is no host name";
  return {};
}

void check_active_trades(const SiteView& site, Diagnostics& findings) {
  Duplicates<std::int32_t> ids(kinds::kDuplicateId, "number ");
  Duplicates<std::string_view> domains(kinds::kDuplicateDomain, "domain ");
  for (std::size_t i = 0; i < site.run.trades.size(); ++i) {
    const TradeRecord& trade = site.run.trades[i];
    if (!is_active(trade)) continue;
    const std::string_view domain = domain_of(trade);
    if (contains(url_of(trade), kTagMark)) {
      findings.push_back({&kinds::kMarkInValue,
                          {.file = kTradesPath, .record = i + 1},
                          "the address " + in_quotes(url_of(trade)) + " holds \"%%\""});
    }
    if (holds_markup(url_of(trade))) {
      findings.push_back({&kinds::kMarkupInValue,
                          {.file = kTradesPath, .record = i + 1},
                          "the address " + in_quotes(url_of(trade)) + " holds markup"});
    }
    ids.add(trade.trade_id, std::to_string(trade.trade_id), i + 1, findings);
    if (const std::string_view fault = domain_fault(domain); !fault.empty()) {
      findings.push_back(
          {&kinds::kBadDomain, {.file = kTradesPath, .record = i + 1}, std::string(fault)});
    } else {
      domains.add(domain, in_quotes(domain), i + 1, findings);
    }
  }
}

}  // namespace

void check_trades(const SiteView& site, Diagnostics& findings) {
  const SiteFile file(kTradesPath);
  if (!check_open(file, findings)) return;
  check_size(file, site, findings);
  check_active_trades(site, findings);
}

}  // namespace toplist::ctl
