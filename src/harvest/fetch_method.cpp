#include "harvest/fetch_method.h"

#include <algorithm>
#include <array>

namespace toplist {
namespace {

constexpr std::array<DownloadMethod, 3> kDownloadMethods{{
    {"1", kWget, fetch_with_wget},
    {"2", kFetch, fetch_with_fetch},
    {"3", kCurl, fetch_with_curl},
}};

}  // namespace

const DownloadMethod* find_download_method(std::string_view number) {
  const auto* const found =
      std::find_if(kDownloadMethods.begin(), kDownloadMethods.end(),
                   [number](const DownloadMethod& method) { return method.number == number; });
  return found == kDownloadMethods.end() ? nullptr : found;
}

bool is_fetch_method(std::string_view number) {
  return number == kRawHttpMethod || find_download_method(number) != nullptr;
}

}  // namespace toplist
