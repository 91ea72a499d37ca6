#pragma once

#include <string>
#include <string_view>

namespace toplist {

/// Ends a link, and so a slice of a page.
inline constexpr std::string_view kLinkEnd = "</a>";

/// The bare host of an address: without "https://", then "http://", then "www." in front, and up to
/// the first "/" or "?". Letter case and a port stay. Works on its own copy of the text.
std::string host_of_url(std::string text);

/// What the first link of a slice of a page offers.
struct ThumbnailLink {
  std::string picture = {};       ///< absolute address; empty when there is none
  std::string_view refusal = {};  ///< why there is none; empty when there is one
};

/// Picks the picture inside the first link of a slice of a page, unless the link is foreign or a
/// script.
///
/// `chunk` is the slice, from the page's start to a "</a>"; it is lower-cased and unquoted on the
/// way, so the result is lower case. `host` is the page's, as host_of_url() gives it. Links that
/// begin with "http://" must go on with the host or "www." and the host; all others pass.
ThumbnailLink pick_thumbnail_link(std::string chunk, const std::string& host);

}  // namespace toplist
