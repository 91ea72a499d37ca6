#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace toplist {

/// What a search does with the world outside, and whom it tells.
struct SearchSteps {
  /// Fetches a picture address into `image`, or leaves `image` as it is.
  std::function<void(const std::string& address, std::string& image)> fetch;
  /// Stores an accepted picture. May cut what is no part of it off `image`.
  std::function<void(std::string& image)> store;
  /// Learns how each pass ended: the picture's address, where the link offers one, and why none was
  /// stored, or an empty text. May be left empty.
  std::function<void(std::string_view address, std::string_view refusal)> observe = {};
};

/// Tries the pictures of the page's links in turn, ten links at most; each uses up a pass, whether
/// or not its picture is worth a fetch. The search ends when `image` holds 2048 bytes or more
/// behind a pass: a picture has been stored, or a large HTML page has come, which ends it as well
/// (contract: large-page). Returns what ended it, in words.
///
/// `page` is in lower case, `host` the page's host as of host_of_url().
std::string_view search_picture(std::string_view page, const std::string& host,
                                const SearchSteps& steps);

/// Why a picture address is not worth a fetch; empty when it is: above 10 bytes, none of "logo",
/// "home" and "book" anywhere in it, and at least five digits.
std::string_view candidate_fault(std::string_view address);

/// Why a fetched response is not taken for a picture; empty when it is: 2048 bytes at least, head
/// included, and no HTML page.
std::string_view picture_fault(std::string_view response);

/// Cuts the head off an HTTP response: everything up to the first empty line. Without one, the
/// response stays whole.
void remove_response_head(std::string& response);

}  // namespace toplist
