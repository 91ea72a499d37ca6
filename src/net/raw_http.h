#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "util/unique_fd.h"

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

/// Why a fetch fails.
enum class FetchFailure {
  refused_address,
  no_socket,
  unknown_host,
  no_connection,
  no_first_byte,
  too_large,
};
std::string_view failure_text(FetchFailure failure);

/// A response as it came, head and body, or why there is none.
struct RawResponse {
  std::string bytes = {};
  std::optional<FetchFailure> failure = {};

  /// The response, or kRawHttpFailure.
  [[nodiscard]] std::string text() && { return failure ? kRawHttpFailure : std::move(bytes); }
};

using Connections = std::vector<UniqueFd>;

/// Fetches `url` with an HTTP/1.0 request to `host` (a name or a dotted IPv4 address; the caller
/// takes it from the url). Prints nothing. An address with a control character is refused.
///
/// The connection of a response that is too large is not closed: it goes to `held_open`. After a
/// response has begun there is no time-out (contract: no-later-timeout), but a peer that is gone is
/// noticed after a minute. Several threads may call this at once, each with its own `held_open`.
RawResponse get_raw_http(const std::string& host, const std::string& url, Connections& held_open,
                         std::uint16_t port = kHttpPort);

/// The same for a harvest: a failure gives kRawHttpFailure. If a response did not begin in time or
/// was too large, prints a note on standard output. Other failures print nothing.
std::string fetch_raw_http(const std::string& host, const std::string& url, Connections& held_open,
                           std::uint16_t port = kHttpPort);

/// The request for `url`. Its path is the text after the first `host` in the url, with a "/" before
/// it unless it begins with one.
std::string raw_http_request(std::string_view host, std::string_view url);

}  // namespace toplist
