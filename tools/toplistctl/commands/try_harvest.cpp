// try-harvest TRADE: what a harvest makes of a trade's page and pictures.

#include "toplistctl/commands/try_harvest.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "harvest/fetch_method.h"
#include "harvest/harvest.h"
#include "harvest/picture_search.h"
#include "harvest/trade_harvest.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_data.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

/// The first line of a response without its end, or the beginning of a longer one.
std::string first_line(const std::string& response) {
  constexpr std::size_t kLongest = 100;
  return response.substr(0, std::min(response.find_first_of("\r\n"), kLongest));
}

/// One trade's harvest, reported step by step.
class HarvestTrace {
 public:
  HarvestTrace(const TradeRecord& trade, const HarvestConfig& config, const RawGet& get,
               const Report& report)
      : config_(config),
        get_(get),
        report_(report),
        harvest_(trade, config,
                 [this](const auto& host, const auto& url) { return fetch_raw(host, url); }) {}

  /// True if a picture would be stored.
  bool run() {
    add("Page: {}", harvest_.url());
    const std::string page = harvest_.fetch_page();
    report_download(harvest_.url(), page);
    if (config_.lines.size() > HarvestConfig::kLineCount) {
      add("The configuration has more than 7 lines: a run stores nothing.");
      return false;
    }
    add("End: {}.", search_picture(page, harvest_.host(), steps()));
    return stored_;
  }

 private:
  template <typename... Values>
  void add(fmt::format_string<Values...> format, Values&&... values) const {
    report_(printable_line(format, std::forward<Values>(values)...));
  }

  SearchSteps steps() {
    return {.fetch = [this](const auto& address, auto& image) { fetch(address, image); },
            .store = [this](auto& image) { store(image); },
            .observe = [this](auto address, auto refusal) { observe(address, refusal); }};
  }

  std::string fetch_raw(const std::string& host, const std::string& url) const {
    RawResponse response = get_(host, url);
    if (response.failure) {
      add("  the fetch failed: {}", failure_text(*response.failure));
    } else {
      add("  {}, beginning {}", count_of(response.bytes.size(), "byte"),
          in_quotes(first_line(response.bytes)));
    }
    return std::move(response).text();
  }

  /// Reports the result of an external downloader. fetch_raw() reports that of the built-in client.
  void report_download(const std::string& url, const std::string& text) const {
    const DownloadMethod* const method = find_download_method(config_.fetch_method());
    if (method == nullptr) return;
    const std::string_view fault = address_fault(trim_control_characters(url));
    if (harvest_.host().empty()) {
      add("  not fetched: the trade's address has no host");
    } else if (!fault.empty()) {
      add("  not fetched: {}", fault);
    } else if (text.empty()) {
      add("  {} returned nothing", method->program());
    } else {
      add("  {} by {}", count_of(text.size(), "byte"), method->program());
    }
  }

  void fetch(const std::string& address, std::string& image) {
    begin_link(address);
    harvest_.fetch_picture(address, image);
    report_download(address, image);
  }

  void observe(std::string_view address, std::string_view refusal) {
    if (!link_begun_) begin_link(address);
    if (!refusal.empty()) add("  refused: {}", refusal);
    link_begun_ = false;
  }

  void begin_link(std::string_view address) {
    add("Link {}{}{}", ++links_, address.empty() ? "" : ": ", address);
    link_begun_ = true;
  }

  void store(std::string& image) {
    const std::string path = harvest_.thumbnail_path();
    if (path.empty()) {
      add("  not stored: the trade's domain leads out of the thumbnail folder");
      return;
    }
    harvest_.remove_head(image);
    add("  taken: a run stores {} as {} and runs", count_of(image.size(), "byte"), path);
    add("    {}", harvest_.image_tool_command());
    stored_ = true;
  }

  const HarvestConfig& config_;
  const RawGet& get_;
  const Report& report_;
  const TradeHarvest harvest_;
  int links_ = 0;
  bool link_begun_ = false;
  bool stored_ = false;
};

struct Arguments {
  std::string site = ".";
  std::string trade;
};

Expected<int> run(const Arguments& arguments) {
  const auto trades = read_trades();
  if (!trades) return tl::unexpected(trades.error());
  const auto config = read_file(kHarvestConfigPath);
  if (!config) return tl::unexpected(config.error());
  const auto trade = std::find_if(
      trades->begin(), trades->end(),
      [&arguments](const TradeRecord& record) { return is_called(record, arguments.trade); });
  if (trade == trades->end()) {
    return failure(
        fmt::format("{} has no trade with the number or domain {}", kTradesPath, arguments.trade));
  }
  Connections held_open;
  const RawGet get = [&held_open](const std::string& host, const std::string& url) {
    return get_raw_http(host, url, held_open);
  };
  int status = 0;
  const Report report = [&status](const std::string& lines) {
    if (status == 0) status = print(lines);
  };
  const bool stored = try_harvest(*trades, static_cast<std::size_t>(trade - trades->begin()),
                                  parse_harvest_config(*config, ""), get, report);
  if (status != 0) return status;
  return stored ? 0 : kExitFindings;
}

}  // namespace

bool try_harvest(std::span<const TradeRecord> trades, std::size_t index,
                 const HarvestConfig& config, const RawGet& get, const Report& report) {
  if (index < kFirstHarvestedTrade) {
    report(
        fmt::format("No run visits the first {} trades. Record {} is one of them. If a run "
                    "visited it:\n",
                    kFirstHarvestedTrade, index + 1));
  }
  if (!config.harvest_enabled()) {
    report("Line 7 of the configuration switches the harvest off. If it were on:\n");
  }
  if (!is_fetch_method(config.fetch_method())) {
    report("Line 5 of the configuration is not a fetch method: nothing is fetched.\n");
    return false;
  }
  return HarvestTrace(trades[index], config, get, report).run();
}

void add_try_harvest_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command =
      program.add_command("try-harvest", "Show what a harvest makes of a trade");
  command.footer(
      "Exit status: 0 a run would store a picture, 1 it would store none, 2 the site cannot be "
      "read.\n"
      "Example: toplistctl try-harvest --site /srv/mysite tea.example");
  add_site_option(command, arguments->site);
  command.text("trade", "TRADE", arguments->trade, "A trade's number or domain").required();
  command.run([arguments] {
    return enter_site(arguments->site).and_then([&] { return run(*arguments); });
  });
}

}  // namespace toplist::ctl
