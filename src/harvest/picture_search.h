#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace toplist {

/// Fetches a picture address into `image`, or leaves `image` as it is.
using FetchPicture = std::function<void(const std::string& address, std::string& image)>;

/// Stores an accepted picture. May cut what is no part of it off `image`.
using StorePicture = std::function<void(std::string& image)>;

/// Tries the pictures of the page's links in turn, ten links at most; each uses up a pass, whether
/// or not its picture is worth a fetch. The search ends when `image` holds 2048 bytes or more
/// behind a pass: a picture has been stored, or a large HTML page has come, which ends it on
/// purpose.
///
/// `page` is in lower case, `host` the page's host as of host_of_url().
void search_picture(std::string_view page, const std::string& host, const FetchPicture& fetch,
                    const StorePicture& store);

/// Whether a picture address is worth a fetch: above 10 bytes, none of "logo", "home" and "book"
/// anywhere in it, and at least five digits.
bool is_candidate(std::string_view address);

/// Whether a fetched response is taken for a picture: 2048 bytes at least, head included, and no
/// HTML page.
bool is_picture(std::string_view response);

/// Cuts the head off an HTTP response: everything up to the first empty line. Without one, the
/// response stays whole.
void remove_response_head(std::string& response);

}  // namespace toplist
