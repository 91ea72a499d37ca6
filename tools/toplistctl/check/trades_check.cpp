#include <map>
#include <string>

#include "render/tag.h"
#include "toplistctl/check/check.h"
#include "toplistctl/check/kinds.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

constexpr std::size_t kRecordBytes = sizeof(TradeRecord);

void check_size(const SiteData& site, Findings& findings) {
  const std::size_t count = site.trades.size();
  const std::size_t cut = site.trades_file.text().size() % kRecordBytes;
  if (cut != 0) {
    findings.push_back(
        {&kinds::kCutRecord,
         kTradesPath,
         {.record = count},
         "holds " + std::to_string(cut) + " of " + std::to_string(kRecordBytes) + " bytes"});
  }
  if (count < kFewestTrades) {
    findings.push_back(
        {&kinds::kTooFewRecords,
         kTradesPath,
         {},
         "holds " + count_of(count, "record") + ", a run needs " + std::to_string(kFewestTrades)});
  } else if (site.rows.empty()) {
    findings.push_back({&kinds::kNoActiveTrades,
                        kTradesPath,
                        {},
                        "none of the " + count_of(count, "trade") + " has status 1"});
  }
}

/// Finds values that an earlier active trade has as well.
template <typename Value>
class Duplicates {
 public:
  Duplicates(const Kind& kind, const char* what) : kind_(kind), what_(what) {}

  void add(const Value& value, const std::string& text, std::size_t record, Findings& findings) {
    const auto [first, is_new] = first_.emplace(value, record);
    if (is_new) return;
    findings.push_back({&kind_,
                        kTradesPath,
                        {.record = record},
                        what_ + text + " is also that of record " + std::to_string(first->second)});
  }

 private:
  const Kind& kind_;
  const std::string what_;
  std::map<Value, std::size_t> first_;
};

/// What is wrong with a domain, if anything.
std::string_view domain_fault(std::string_view domain) {
  if (domain.empty()) return "the domain is empty";
  if (domain.size() >= sizeof(TradeRecord::domain)) return "the domain fills its field to the end";
  if (domain.find('/') != std::string_view::npos) return "the domain holds a \"/\"";
  return {};
}

void check_active_trades(const SiteData& site, Findings& findings) {
  Duplicates<std::int32_t> ids(kinds::kDuplicateId, "number ");
  Duplicates<std::string_view> domains(kinds::kDuplicateDomain, "domain ");
  for (std::size_t i = 0; i < site.trades.size(); ++i) {
    const TradeRecord& trade = site.trades[i];
    if (!is_active(trade)) continue;
    const std::string_view domain = domain_of(trade);
    if (contains(url_of(trade), kTagMark)) {
      findings.push_back({&kinds::kMarkInValue,
                          kTradesPath,
                          {.record = i + 1},
                          "the address " + in_quotes(url_of(trade)) + " holds \"%%\""});
    }
    ids.add(trade.trade_id, std::to_string(trade.trade_id), i + 1, findings);
    if (const std::string_view fault = domain_fault(domain); !fault.empty()) {
      findings.push_back({&kinds::kBadDomain, kTradesPath, {.record = i + 1}, std::string(fault)});
    } else {
      domains.add(domain, in_quotes(domain), i + 1, findings);
    }
  }
}

}  // namespace

void check_trades(const SiteData& site, Findings& findings) {
  if (!check_open(site.trades_file, findings)) return;
  check_size(site, findings);
  check_active_trades(site, findings);
}

}  // namespace toplist::ctl
