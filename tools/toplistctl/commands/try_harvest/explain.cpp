#include "toplistctl/commands/try_harvest/explain.h"

#include <algorithm>
#include <utility>

#include "harvest/fetch_method.h"
#include "harvest/harvest.h"
#include "harvest/picture_search.h"
#include "harvest/trade_harvest.h"
#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/output/printable.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

/// The first line of a response without its end, or the beginning of a longer one.
std::string first_line(const std::string& response) {
  constexpr std::size_t kLongest = 100;
  return response.substr(0, std::min(response.find_first_of("\r\n"), kLongest));
}

/// One trade's harvest, told as it goes.
class Account {
 public:
  Account(const TradeRecord& trade, const HarvestConfig& config, const RawGet& get,
          const Tell& tell)
      : config_(config),
        get_(get),
        tell_(tell),
        harvest_(trade, config,
                 [this](const auto& host, const auto& url) { return fetch_raw(host, url); }) {}

  /// True when a picture would be stored.
  bool give() {
    add("Page: " + harvest_.url());
    const std::string page = harvest_.fetch_page();
    tell_download(harvest_.url(), page);
    if (config_.lines.size() > HarvestConfig::kLineCount) {
      add("The configuration has more than 7 lines: a run stores nothing.");
      return false;
    }
    add("End: " + std::string(search_picture(page, harvest_.host(), steps())) + ".");
    return stored_;
  }

 private:
  void add(std::string line) const { tell_(printable(std::move(line))); }

  SearchSteps steps() {
    return {.fetch = [this](const auto& address, auto& image) { fetch(address, image); },
            .store = [this](auto& image) { store(image); },
            .observe = [this](auto address, auto refusal) { observe(address, refusal); }};
  }

  std::string fetch_raw(const std::string& host, const std::string& url) const {
    RawResponse response = get_(host, url);
    add(response.failure ? "  nothing came: " + std::string(failure_text(*response.failure))
                         : "  " + count_of(response.bytes.size(), "byte") + ", beginning " +
                               in_quotes(first_line(response.bytes)));
    return std::move(response).text();
  }

  /// The built-in client has told by itself.
  void tell_download(const std::string& url, const std::string& text) const {
    const DownloadMethod* const method = find_download_method(config_.fetch_method());
    if (method == nullptr) return;
    const std::string_view fault = address_fault(trim_control_characters(url));
    if (harvest_.host().empty()) {
      add("  not fetched: the trade's address has no host");
    } else if (!fault.empty()) {
      add("  not fetched: " + std::string(fault));
    } else if (text.empty()) {
      add("  nothing came by " + std::string(method->program()));
    } else {
      add("  " + count_of(text.size(), "byte") + " by " + std::string(method->program()));
    }
  }

  void fetch(const std::string& address, std::string& image) {
    begin_link(address);
    harvest_.fetch_picture(address, image);
    tell_download(address, image);
  }

  void observe(std::string_view address, std::string_view refusal) {
    if (!link_begun_) begin_link(address);
    if (!refusal.empty()) add("  refused: " + std::string(refusal));
    link_begun_ = false;
  }

  void begin_link(std::string_view address) {
    const std::string link = "Link " + std::to_string(++links_);
    add(address.empty() ? link : link + ": " + std::string(address));
    link_begun_ = true;
  }

  void store(std::string& image) {
    const std::string path = harvest_.thumbnail_path();
    if (path.empty()) {
      add("  not stored: the trade's domain leads out of the thumbnail folder");
      return;
    }
    harvest_.remove_head(image);
    add("  taken: a run stores " + count_of(image.size(), "byte") + " as " + path + " and runs");
    add("    " + harvest_.image_tool_command());
    stored_ = true;
  }

  const HarvestConfig& config_;
  const RawGet& get_;
  const Tell& tell_;
  const TradeHarvest harvest_;
  int links_ = 0;
  bool link_begun_ = false;
  bool stored_ = false;
};

}  // namespace

bool explain_harvest(std::span<const TradeRecord> trades, std::size_t index,
                     const HarvestConfig& config, const RawGet& get, const Tell& tell) {
  const std::string record = "Record " + std::to_string(index + 1);
  if (index < kFirstHarvestedTrade) {
    tell(record + " is one of the first " + std::to_string(kFirstHarvestedTrade) +
         ", which no run visits. If one did:");
  }
  if (!config.harvest_enabled()) {
    tell("Line 7 of the configuration switches the harvest off. If it were on:");
  }
  if (!is_fetch_method(config.fetch_method())) {
    tell("Line 5 of the configuration is no fetch method: nothing is fetched.");
    return false;
  }
  return Account(trades[index], config, get, tell).give();
}

}  // namespace toplist::ctl
