#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace toplist {

/// The actions of a search, and where it reports each pass.
struct SearchSteps {
  /// Fetches a picture address into `image`, or leaves `image` as it is.
  std::function<void(const std::string& address, std::string& image)> fetch;
  /// Stores an accepted picture. May first cut off bytes of `image` that are not part of it.
  std::function<void(std::string& image)> store;
  /// Gets the result of each pass: the picture's address, if the link has one, and why no picture
  /// was stored, or an empty text. May be empty.
  std::function<void(std::string_view address, std::string_view refusal)> observe = {};
};

/// Tries the pictures of the page's links in turn, ten links at most. Each link is a pass, even if
/// its picture is not fetched. The search ends after a pass if `image` has 2048 bytes or more: a
/// picture was stored, or the response was a large HTML page (contract: large-page). Returns the
/// reason for the end, as text.
///
/// `page` is in lower case. `host` is the page's host, as from host_of_url().
std::string_view search_picture(std::string_view page, const std::string& host,
                                const SearchSteps& steps);

/// Why a picture address is not worth a fetch; empty when it is: above 10 bytes, none of "logo",
/// "home" and "book" anywhere in it, and at least five digits.
std::string_view candidate_fault(std::string_view address);

/// Why a fetched response does not count as a picture. Empty if it does: it has at least 2048
/// bytes, including the head, and is not an HTML page.
std::string_view picture_fault(std::string_view response);

/// Cuts the head off an HTTP response: everything up to the first empty line. Without one, the
/// response stays whole.
void remove_response_head(std::string& response);

}  // namespace toplist
