#pragma once

#include <string>
#include <string_view>

namespace toplist {

/// Ends a link, and so a slice of a page.
inline constexpr std::string_view kLinkEnd = "</a>";

/// The bare host of an address: without a leading "https://", then "http://", then "www.", and up
/// to the first "/" or "?". Letter case and a port stay. Works on its own copy of the text.
std::string host_of_url(std::string text);

/// The picture of the first link in a slice of a page.
struct ThumbnailLink {
  std::string picture = {};       ///< absolute address; empty when there is none
  std::string_view refusal = {};  ///< why there is none; empty when there is one
};

/// Picks the picture inside the first link of a slice of a page, unless the link is foreign or a
/// script.
///
/// `chunk` is the slice, from the page's start to a "</a>". It is lower-cased and unquoted, so the
/// result is in lower case. `host` is the page's, as from host_of_url(). Links that begin with
/// "http://" must continue with the host, or "www." and the host. All other links pass.
ThumbnailLink pick_thumbnail_link(std::string chunk, const std::string& host);

}  // namespace toplist
