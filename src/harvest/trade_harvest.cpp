#include "harvest/trade_harvest.h"

#include <utility>

#include "harvest/fetch_method.h"
#include "harvest/link.h"
#include "harvest/picture_search.h"
#include "util/file.h"
#include "util/shell.h"
#include "util/text.h"

namespace toplist {
namespace {

constexpr const char* kPictureSuffix = ".jpg";

/// Whether files named by `prefix` and `name` are in the prefix's folder or below it. The text
/// after the prefix's last "/" begins their name.
bool stays_below(std::string_view prefix, std::string_view name) {
  if (prefix.empty() && name.starts_with('/')) return false;
  std::string path = "/" + std::string(prefix.substr(prefix.rfind('/') + 1));
  return !contains(path += name, "/../");
}

}  // namespace

TradeHarvest::TradeHarvest(const TradeRecord& trade, const HarvestConfig& config,
                           RawFetch raw_fetch)
    : config_(config),
      raw_fetch_(std::move(raw_fetch)),
      domain_(domain_of(trade)),
      url_(trim_control_characters(url_of(trade))),
      host_(host_of_url(url_)) {}

std::string TradeHarvest::fetch_page() const {
  std::string page;
  fetch(url_, "", page);
  lower_case(page);
  return page;
}

void TradeHarvest::fetch_picture(const std::string& address, std::string& image) const {
  fetch(std::string(trim_control_characters(address)), kPictureSuffix, image);
}

void TradeHarvest::fetch(const std::string& url, const char* temp_suffix, std::string& text) const {
  if (config_.fetch_method() == kRawHttpMethod) {
    text = raw_fetch_(host_of_url(url), url);
    return;
  }
  const DownloadMethod* const method = find_download_method(config_.fetch_method());
  if (method == nullptr || host_.empty()) return;
  text = method->fetch(kDownloadFolder + host_ + temp_suffix, url);
}

void TradeHarvest::remove_head(std::string& image) const {
  if (config_.fetch_method() == kRawHttpMethod) remove_response_head(image);
}

std::string TradeHarvest::thumbnail_path() const {
  if (!stays_below(config_.thumb_dir(), domain_)) return "";
  return config_.thumb_dir() + domain_ + kPictureSuffix;
}

std::string TradeHarvest::image_tool_command() const {
  return toplist::image_tool_command(config_, host_, domain_);
}

void TradeHarvest::store_thumbnail(std::string& image) const {
  remove_head(image);
  const std::string path = thumbnail_path();
  if (path.empty()) return;
  // The tool runs even if the picture cannot be written: it may work on an earlier one
  // (contract: tool-anyway).
  write_file(path, image);
  run_shell_command(image_tool_command());
}

std::string image_tool_command(const HarvestConfig& config, std::string_view url_host,
                               std::string_view domain) {
  return config.image_tool() + " " + config.thumb_dir() + shell_word(url_host) + kPictureSuffix +
         " " + config.image_tool_args() + " " + config.thumb_dir() + shell_word(domain) +
         kPictureSuffix;
}

}  // namespace toplist
