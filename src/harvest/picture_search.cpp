#include "harvest/picture_search.h"

#include <algorithm>
#include <array>
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

/// A piece of text for which a link or picture is refused.
struct Mark {
  std::string_view text;
  std::string_view fault;
};
constexpr std::array<Mark, 3> kOrnaments{{
    {"logo", "its address holds \"logo\""},
    {"home", "its address holds \"home\""},
    {"book", "its address holds \"book\""},
}};
constexpr std::array<Mark, 2> kHtmlTags{{
    {"<html>", "an HTML page: it holds \"<html>\""},
    {"<body", "an HTML page: it holds \"<body\""},
}};

template <std::size_t N>
std::string_view first_fault(const std::array<Mark, N>& marks, std::string_view text) {
  for (const Mark& mark : marks) {
    if (contains(text, mark.text)) return mark.fault;
  }
  return {};
}

/// Fetches and stores the picture of a link. Returns the reason if not, or an empty text.
std::string_view try_picture(const ThumbnailLink& link, const SearchSteps& steps,
                             std::string& image) {
  if (!link.refusal.empty()) return link.refusal;
  if (const auto fault = candidate_fault(link.picture); !fault.empty()) return fault;
  steps.fetch(link.picture, image);
  if (const auto fault = picture_fault(image); !fault.empty()) return fault;
  steps.store(image);
  return {};
}

}  // namespace

std::string_view candidate_fault(std::string_view address) {
  if (address.size() < kShortestCandidate) return "its address has 10 characters or fewer";
  if (const auto fault = first_fault(kOrnaments, address); !fault.empty()) return fault;
  const auto digits = std::count_if(address.begin(), address.end(), is_digit);
  return digits < kFewestDigits ? "its address has fewer than 5 digits" : "";
}

std::string_view picture_fault(std::string_view response) {
  if (response.size() < kSmallestPictureBytes) return "fewer than 2048 bytes";
  return first_fault(kHtmlTags, response);
}

void remove_response_head(std::string& response) {
  const std::size_t head_end = response.find(kHeadEnd);
  if (head_end != std::string::npos) response.erase(0, head_end + kHeadEnd.size());
}

std::string_view search_picture(std::string_view page, const std::string& host,
                                const SearchSteps& steps) {
  std::string image;  // kept from one candidate to the next
  for (int pass = 0; pass < kMostPasses; ++pass) {
    const std::size_t link_end = page.find(kLinkEnd);
    if (link_end == std::string_view::npos) return "no further link is in the page";
    const std::string_view chunk = page.substr(0, link_end + kLinkEnd.size());
    page.remove_prefix(chunk.size());

    const ThumbnailLink link = pick_thumbnail_link(std::string(chunk), host);
    const std::string_view refusal = try_picture(link, steps, image);
    if (steps.observe) steps.observe(link.picture, refusal);
    if (image.size() >= kSmallestPictureBytes) return "2048 bytes or more have come";
  }
  return "ten links have been tried";
}

}  // namespace toplist
