#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace toplist {

inline constexpr std::uint16_t kHttpPort = 80;

/// How long a connection, sending the request and then the first byte of the response may take.
inline constexpr int kConnectTimeoutSeconds = 2;
inline constexpr int kSendTimeoutSeconds = 2;
inline constexpr int kFirstByteTimeoutSeconds = 2;

/// Reading stops when the response has reached this size...
inline constexpr std::size_t kReceiveLimitBytes = 10UL * 1024 * 1024;
/// ...and a response above this one is refused.
inline constexpr std::size_t kResponseLimitBytes = kReceiveLimitBytes - 1024;

/// What a failed fetch returns.
inline constexpr const char* kRawHttpFailure = "-1";

/// Fetches `url` with an HTTP/1.0 request to `host` (a name or a dotted IPv4 address; the caller
/// takes it from the url). Returns the response as it came, head and body, or kRawHttpFailure.
///
/// A response that does not begin in time or is too large leaves a note on standard output; other
/// failures print nothing. Once the response has begun there is no time-out. Any number of threads
/// may call this at once.
std::string fetch_raw_http(const std::string& host, const std::string& url);

/// The same to another port than 80.
std::string fetch_raw_http(const std::string& host, const std::string& url, std::uint16_t port);

/// The request for `url`. Its path is what follows the first `host` in the url, with a "/" put in
/// front when it does not begin with one.
std::string raw_http_request(std::string_view host, std::string_view url);

}  // namespace toplist
