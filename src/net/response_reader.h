#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace toplist {

/// The length that an HTTP response's head announces for its body, in bytes; nothing if there is
/// any doubt.
///
/// `head` is the status line and the header lines, which end in CR LF or a bare LF, up to an empty
/// line. It must be that of a final response with a body (no 1xx, 204 or 304) with exactly one
/// Content-Length of decimal digits only, below 2^64, and without a Transfer-Encoding. Each header
/// line must have a name directly before a colon, in upper or lower case: programs read a folded
/// line, or one with a blank before the colon, in different ways (contract: half-close).
std::optional<std::uint64_t> announced_length(std::string_view head);

/// A response that arrives in pieces: collects its bytes and finds out when it has the announced
/// length. Reads every byte once, whatever the pieces.
class ResponseReader {
 public:
  /// Adds what has arrived.
  void append(std::string_view bytes);

  /// Whether the body has at least announced_length() bytes. A response that announces no length is
  /// never complete: it ends with its stream.
  [[nodiscard]] bool is_complete() const {
    return body_bytes_ && bytes_.size() - body_start_ >= *body_bytes_;
  }

  [[nodiscard]] std::size_t size() const { return bytes_.size(); }

  /// The whole response, head and body; leaves this one empty.
  [[nodiscard]] std::string take() { return std::move(bytes_); }

 private:
  std::string bytes_;
  std::size_t body_start_ = 0;  ///< 0 until the head has ended
  std::optional<std::uint64_t> body_bytes_;
};

}  // namespace toplist
