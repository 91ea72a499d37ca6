#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "harvest/harvest_config.h"
#include "run/trade_record.h"

namespace toplist {

/// The folder for the external downloaders' files. The page's host names the file, so two trades on
/// one host that are harvested at once share it (contract: shared-download).
inline constexpr const char* kDownloadFolder = "l/sys/net/";

/// Fetches as fetch_raw_http() does.
using RawFetch = std::function<std::string(const std::string& host, const std::string& url)>;

/// The steps of one trade's harvest. harvest_trade() runs them.
///
/// A page may break lines anywhere. So control characters at the ends of an address are not part of
/// it, nor of its host and file names. Those inside stay, and every fetch refuses them (contract:
/// control-characters).
class TradeHarvest {
 public:
  /// `config` and what `raw_fetch` refers to must outlive this object.
  TradeHarvest(const TradeRecord& trade, const HarvestConfig& config, RawFetch raw_fetch);

  /// The address of the trade's page, and its host as from host_of_url().
  [[nodiscard]] const std::string& url() const { return url_; }
  [[nodiscard]] const std::string& host() const { return host_; }

  /// The trade's page in lower case; empty when there is none.
  [[nodiscard]] std::string fetch_page() const;

  /// Fetches a picture into `image`. `image` is unchanged if the fetch method is unknown, or if a
  /// downloader would have no name for its temporary file.
  void fetch_picture(const std::string& address, std::string& image) const;

  /// Cuts the HTTP head off a response of the built-in client. If the image is then below the size
  /// that ends the search, the search continues (contract: small-without-head).
  void remove_head(std::string& image) const;

  /// The path of the thumbnail; empty if it would be outside the thumbnail folder (contract:
  /// own-folder). A domain may name a folder inside.
  [[nodiscard]] std::string thumbnail_path() const;

  /// The shell command line that runs the image tool on the stored thumbnail.
  [[nodiscard]] std::string image_tool_command() const;

  /// Cuts an accepted picture's head off, stores it as the thumbnail and runs the image tool.
  /// Without a path for it, only cuts the head off.
  void store_thumbnail(std::string& image) const;

 private:
  void fetch(const std::string& url, const char* temp_suffix, std::string& text) const;

  const HarvestConfig& config_;
  const RawFetch raw_fetch_;
  const std::string domain_;
  const std::string url_;
  const std::string host_;
};

/// The shell command line that runs the image tool on a stored thumbnail.
///
/// The page's host names its input path, and the trade's domain its output path. They are the same
/// if the trade's page is on its own domain (contract: host-and-domain).
std::string image_tool_command(const HarvestConfig& config, std::string_view url_host,
                               std::string_view domain);

}  // namespace toplist
