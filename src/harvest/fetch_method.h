#pragma once

#include <string>
#include <string_view>

#include "net/downloader.h"

namespace toplist {

/// The fetch method of the built-in client.
inline constexpr std::string_view kRawHttpMethod = "0";

/// A fetch method that runs an external downloader.
struct DownloadMethod {
  std::string_view number;  ///< as the configuration names it
  const Downloader& downloader;
  std::string (*fetch)(const std::string& temp_path, const std::string& url);

  /// The name of the program, which must be in PATH.
  [[nodiscard]] std::string_view program() const {
    return downloader.command.substr(0, downloader.command.find(' '));
  }
};

/// The method whose number is exactly this text; nullptr if there is none.
const DownloadMethod* find_download_method(std::string_view number);

/// Whether the harvest fetches anything with this value of the configuration's fetch method.
bool is_fetch_method(std::string_view number);

}  // namespace toplist
