#include "harvest/harvest_worker.h"

#include <pthread.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "harvest/link.h"
#include "net/downloader.h"
#include "net/raw_http.h"
#include "run/sys_log.h"
#include "util/file.h"
#include "util/number.h"
#include "util/shell.h"
#include "util/text.h"

namespace toplist {
namespace {

constexpr const char* kTempFolder = "l/sys/net/";
constexpr const char* kPictureSuffix = ".jpg";
constexpr std::string_view kLinkEnd = "</a>";
constexpr std::string_view kHeadEnd = "\r\n\r\n";

constexpr int kMostPasses = 10;
constexpr std::size_t kShortestCandidate = 11;
constexpr std::ptrdiff_t kFewestDigits = 5;
constexpr std::size_t kSmallestPictureBytes = 2048;

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

  /// Tries the pictures of the page's links in turn. Each link uses up a pass, whether or not its
  /// picture is worth a fetch.
  void look_for_picture(std::string_view page) {
    std::size_t link_end = page.find(kLinkEnd);
    for (int pass = 0; pass < kMostPasses && link_end != std::string_view::npos &&
                       image_.size() < kSmallestPictureBytes;
         ++pass) {
      const std::string_view chunk = page.substr(0, link_end + kLinkEnd.size());
      page.remove_prefix(chunk.size());
      link_end = page.find(kLinkEnd);
      try_candidate(pick_thumbnail_link(std::string(chunk), url_host_));
    }
  }

 private:
  /// Fetches `url` into `text` by the configured method. `text` stays as it is when that method is
  /// unknown, or when a downloader would have no name for its temporary file.
  void fetch(const std::string& url, const char* temp_suffix, std::string& text) const {
    if (config_.fetch_method() == kRawHttpMethod) text = fetch_raw_http(host_of_url(url), url);
    if (url_host_.empty()) return;
    for (const DownloadMethod& entry : kDownloadMethods) {
      if (config_.fetch_method() != entry.method) continue;
      text = entry.fetch(kTempFolder + url_host_ + temp_suffix, url);
    }
  }

  void try_candidate(const std::string& address) {
    if (!is_candidate(address)) return;
    fetch(address, kPictureSuffix, image_);
    if (is_picture(image_)) store_thumbnail();
  }

  void store_thumbnail() {
    if (contains(domain_, "/")) return;  // it would leave the thumbnail directory
    if (config_.fetch_method() == kRawHttpMethod) remove_head();
    write_file(config_.thumb_dir() + domain_ + kPictureSuffix, image_);
    run_shell_command(image_tool_command(config_, url_host_, domain_));
  }

  /// Leaves the body of a response. It may be below the size that ends the search; then the search
  /// goes on, as it always has.
  void remove_head() {
    const std::size_t head_end = image_.find(kHeadEnd);
    if (head_end != std::string::npos) image_.erase(0, head_end + kHeadEnd.size());
  }

  const HarvestConfig& config_;
  const std::string domain_;
  const std::string url_;
  const std::string url_host_;
  std::string image_;  ///< The last picture fetched; kept from one candidate to the next.
};

}  // namespace

bool is_candidate(std::string_view address) {
  if (address.size() < kShortestCandidate) return false;
  for (const std::string_view word : {"logo", "home", "book"}) {
    if (contains(address, word)) return false;
  }
  return std::count_if(address.begin(), address.end(), is_digit) >= kFewestDigits;
}

bool is_picture(std::string_view response) {
  return response.size() >= kSmallestPictureBytes && !contains(response, "<html>") &&
         !contains(response, "<body");
}

std::string image_tool_command(const HarvestConfig& config, std::string_view url_host,
                               std::string_view domain) {
  return config.image_tool() + " " + config.thumb_dir() + shell_word(url_host) + kPictureSuffix +
         " " + config.image_tool_args() + " " + config.thumb_dir() + shell_word(domain) +
         kPictureSuffix;
}

void harvest_trade(const TradeRecord& trade) {
  FileBuffer config_file;
  if (!config_file.read(kHarvestConfigPath)) {
    return log_unopened_file(kHarvestConfigPath, Severity::run_ends);
  }
  const HarvestConfig config = parse_harvest_config(config_file.text(), "");
  Harvest harvest(trade, config);
  const std::string page = harvest.fetch_page();

  // A longer file ends the harvest silently, and only here, after the fetch. A shorter one has been
  // filled up, so the message is never written; both are meant.
  if (config.lines.size() < HarvestConfig::kLineCount) {
    log_content_error("Invalid data found in file d/tl/vantaig", Severity::run_ends);
  }
  if (config.lines.size() != HarvestConfig::kLineCount) return;
  harvest.look_for_picture(page);
}

void* harvest_worker(void* trade) {
  harvest_trade(*static_cast<const TradeRecord*>(trade));
  ::pthread_exit(nullptr);
}

}  // namespace toplist
