#include "harvest/harvest_worker.h"

#include <pthread.h>

#include <algorithm>
#include <array>
#include <new>

#include "harvest/link.h"
#include "harvest/picture_search.h"
#include "net/downloader.h"
#include "net/raw_http.h"
#include "run/sys_log.h"
#include "util/file.h"
#include "util/shell.h"
#include "util/text.h"

namespace toplist {
namespace {

constexpr const char* kPictureSuffix = ".jpg";
constexpr const char* kRawHttpMethod = "0";

struct DownloadMethod {
  std::string_view method;
  std::string (*fetch)(const std::string& temp_path, const std::string& url);
};
constexpr std::array<DownloadMethod, 3> kDownloadMethods{{
    {"1", fetch_with_wget},
    {"2", fetch_with_fetch},
    {"3", fetch_with_curl},
}};

/// One trade's harvest: what it works with for as long as it lasts.
class Harvest {
 public:
  Harvest(const TradeRecord& trade, const HarvestConfig& config)
      : config_(config),
        domain_(domain_of(trade)),
        url_(url_of(trade)),
        url_host_(host_of_url(url_)) {}

  /// The trade's page in lower case; empty when there is none.
  [[nodiscard]] std::string fetch_page() const {
    std::string page;
    fetch(url_, "", page);
    lower_case(page);
    return page;
  }

  void store_thumbnail_from(std::string_view page) const {
    search_picture(
        page, url_host_,
        [this](const std::string& url, std::string& image) { fetch(url, kPictureSuffix, image); },
        [this](std::string& image) { store_thumbnail(image); });
  }

 private:
  /// Fetches `url` into `text` by the configured method. `text` stays as it is when that method is
  /// unknown, or when a downloader would have no name for its temporary file.
  void fetch(const std::string& url, const char* temp_suffix, std::string& text) const {
    if (config_.fetch_method() == kRawHttpMethod) text = fetch_raw_http(host_of_url(url), url);
    if (url_host_.empty()) return;
    for (const DownloadMethod& entry : kDownloadMethods) {
      if (config_.fetch_method() != entry.method) continue;
      text = entry.fetch(kDownloadFolder + url_host_ + temp_suffix, url);
    }
  }

  /// With the built-in client, `image` loses its HTTP head. It may then be below the size that ends
  /// the search, which goes on in that case, as it always has.
  void store_thumbnail(std::string& image) const {
    if (contains(domain_, "/")) return;  // it would leave the thumbnail directory
    if (config_.fetch_method() == kRawHttpMethod) remove_response_head(image);
    // Whether or not it can be written, on purpose: the tool may work on what is there already.
    write_file(config_.thumb_dir() + domain_ + kPictureSuffix, image);
    run_shell_command(image_tool_command(config_, url_host_, domain_));
  }

  const HarvestConfig& config_;
  const std::string domain_;
  const std::string url_;
  const std::string url_host_;
};

}  // namespace

bool is_fetch_method(std::string_view method) {
  return method == kRawHttpMethod ||
         std::any_of(kDownloadMethods.begin(), kDownloadMethods.end(),
                     [method](const DownloadMethod& entry) { return method == entry.method; });
}

std::string image_tool_command(const HarvestConfig& config, std::string_view url_host,
                               std::string_view domain) {
  return config.image_tool() + " " + config.thumb_dir() + shell_word(url_host) + kPictureSuffix +
         " " + config.image_tool_args() + " " + config.thumb_dir() + shell_word(domain) +
         kPictureSuffix;
}

void harvest_trade(const TradeRecord& trade) {
  FileBuffer config_file;
  if (!read_or_log(kHarvestConfigPath, Severity::run_ends, config_file)) return;
  const HarvestConfig config = parse_harvest_config(config_file.text(), "");
  const Harvest harvest(trade, config);
  const std::string page = harvest.fetch_page();

  // A longer file ends the harvest silently, and only here, after the fetch. A shorter one has been
  // filled up, so the message is never written; both are meant.
  if (config.lines.size() < HarvestConfig::kLineCount) {
    log_content_error("Invalid data found in file d/tl/vantaig", Severity::run_ends);
  }
  if (config.lines.size() != HarvestConfig::kLineCount) return;
  harvest.store_thumbnail_from(page);
}

void* harvest_worker(void* trade) {
  try {
    harvest_trade(*static_cast<const TradeRecord*>(trade));
  } catch (const std::bad_alloc&) {
    // This trade gets no thumbnail; whether the run goes on is for the main thread to find out.
  }
  ::pthread_exit(nullptr);
}

}  // namespace toplist
