#include "harvest/picture_search.h"

#include <algorithm>
#include <cstddef>

#include "harvest/link.h"
#include "util/number.h"
#include "util/text.h"

namespace toplist {
namespace {

constexpr std::string_view kHeadEnd = "\r\n\r\n";

constexpr int kMostPasses = 10;
constexpr std::size_t kShortestCandidate = 11;
constexpr std::ptrdiff_t kFewestDigits = 5;
constexpr std::size_t kSmallestPictureBytes = 2048;

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

void remove_response_head(std::string& response) {
  const std::size_t head_end = response.find(kHeadEnd);
  if (head_end != std::string::npos) response.erase(0, head_end + kHeadEnd.size());
}

void search_picture(std::string_view page, const std::string& host, const FetchPicture& fetch,
                    const StorePicture& store) {
  std::string image;  // kept from one candidate to the next
  std::size_t link_end = page.find(kLinkEnd);
  for (int pass = 0; pass < kMostPasses && link_end != std::string_view::npos &&
                     image.size() < kSmallestPictureBytes;
       ++pass) {
    const std::string_view chunk = page.substr(0, link_end + kLinkEnd.size());
    page.remove_prefix(chunk.size());
    link_end = page.find(kLinkEnd);

    const std::string candidate = pick_thumbnail_link(std::string(chunk), host);
    if (!is_candidate(candidate)) continue;
    fetch(candidate, image);
    if (is_picture(image)) store(image);
  }
}

}  // namespace toplist
