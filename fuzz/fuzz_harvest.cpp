// An HTTP response's way to a thumbnail: the page's links are followed, each to a response made of
// the same bytes, up to the commands that the shell would get.

#include <cstdint>
#include <string>

#include "harvest/link.h"
#include "harvest/picture_search.h"
#include "input.h"
#include "net/downloader.h"
#include "net/raw_http.h"
#include "util/text.h"

namespace {

using toplist::fuzz::require;

/// Whether the shell reads `quoted`, an address in double quotes, as plain text to its end.
bool is_inert(std::string_view quoted) {
  for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
    if (quoted[i] == '\\') {
      if (++i + 1 >= quoted.size()) return false;
    } else if (toplist::kShellSpecials.find(quoted[i]) != std::string_view::npos) {
      return false;
    }
  }
  return quoted.front() == '"' && quoted.back() == '"';
}

void check_command(const toplist::Downloader& downloader, const std::string& url) {
  const std::string command = toplist::download_command(downloader, "l/sys/net/x", url);
  const std::string front = std::string(downloader.command) + "l/sys/net/x ";
  require(command.starts_with(front), "the command's front");
  require(is_inert(std::string_view(command).substr(front.size())), "an address that escapes");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  toplist::fuzz::Input input(bytes, size);
  std::string url(input.text(input.integer<std::uint8_t>() % 64));
  const std::size_t picture_size = input.integer<std::uint16_t>();
  std::string page(input.rest());
  toplist::lower_case(page);
  const std::string response = page + std::string(picture_size, 'x');
  const std::string host = toplist::host_of_url(url);
  require(host.find('/') == std::string::npos, "a host that leaves its folder");
  toplist::raw_http_request(host, url);

  int fetched = 0;
  const auto fetch = [&](const std::string& address, std::string& image) {
    require(address.starts_with("http://"), "an address that is not absolute");
    for (const auto& tool : {toplist::kCurl, toplist::kFetch, toplist::kWget}) {
      check_command(tool, address);
    }
    image = response;
    ++fetched;
  };
  const auto store = [](std::string& image) {
    require(image.size() >= 2048, "a small picture was taken");
    toplist::remove_response_head(image);
  };
  toplist::search_picture(page, host, {.fetch = fetch, .store = store});
  require(fetched <= 10, "more than ten pictures");
  return 0;
}
