#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace toplist {

/// The length that an HTTP response's head announces for its body, in bytes; nothing unless it is
/// beyond doubt.
///
/// `head` is the status line and the header lines, which end in CR LF or a bare LF, up to an empty
/// line. It must be that of a final response with a body (no 1xx, 204 or 304) with exactly one
/// Content-Length of nothing but decimal digits, below 2^64, and without a Transfer-Encoding. Each
/// header line must have a name right before a colon, in any case: one with a blank between them,
/// or a folded one, is read differently by different programs (contract: half-close).
std::optional<std::uint64_t> announced_length(std::string_view head);

/// A response as it arrives: collects its bytes and knows when it is complete by its own
/// announcement. Looks at every byte once, whatever the pieces.
class ResponseReader {
 public:
  /// Adds what has arrived.
  void append(std::string_view bytes);

  /// Whether the body has as many bytes as announced_length() tells, or more. A response that
  /// announces nothing is never complete: it ends with its stream.
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
