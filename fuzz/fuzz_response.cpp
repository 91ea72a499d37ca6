// The reader of HTTP responses, fed in pieces of any size, against a look at all bytes so far with
// regular expressions.

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <regex>
#include <string>

#include "input.h"
#include "net/response_reader.h"

namespace {

using toplist::fuzz::require;

/// The number, kept at a limit beyond any input's size.
std::ptrdiff_t number_of(const std::string& digits) {
  std::ptrdiff_t number = 0;
  for (const char digit : digits) {
    number = std::min<std::ptrdiff_t>(number * 10 + (digit - '0'), 1 << 30);
  }
  return number;
}

/// The number of bytes that a head announces beyond doubt; below 0 without any. Each of its lines
/// has a line feed in front.
std::ptrdiff_t announced_by(const std::string& head) {
  static const std::regex form(
      "\nHTTP/[^ \n]* [ \t]*(?!204|304)[2-5][0-9]{2}([ \t][^\n]*)?(\n[^ \t:\n]+:[^\n]*)*\n");
  static const std::regex framing("\n(Transfer-Encoding|Content-Length):", std::regex::icase);
  static const std::regex length("\nContent-Length:[ \t]*([0-9]+)[ \t]*\n", std::regex::icase);
  if (!std::regex_match(head, form)) return -1;
  const std::sregex_iterator first(head.begin(), head.end(), framing);
  std::smatch found;
  if (std::distance(first, {}) != 1 || !std::regex_search(head, found, length)) return -1;
  return number_of(found.str(1));
}

/// Whether the response is complete by what its head announces.
bool is_complete(const std::string& text) {
  static const std::regex empty_line("\n\r?\n"), line_end("\r\n");
  std::smatch end;
  if (!std::regex_search(text, end, empty_line)) return false;
  const std::string head = "\n" + text.substr(0, static_cast<std::size_t>(end.position(0)) + 1);
  const std::ptrdiff_t announced = announced_by(std::regex_replace(head, line_end, "\n"));
  const auto body = static_cast<std::ptrdiff_t>(text.size()) - end.position(0) - end.length(0);
  return announced >= 0 && body >= announced;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  toplist::fuzz::Input input(bytes, size);
  const std::size_t least_piece = input.integer<std::uint8_t>();
  // The expressions are slow: short texts, in a few pieces.
  const std::string text(input.text(512));
  const std::size_t piece = std::max(least_piece, text.size() / 8 + 1);
  toplist::ResponseReader response;
  for (std::size_t at = 0; at < text.size(); at += piece) {
    response.append(std::string_view(text).substr(at, piece));
    require(response.size() == std::min(text.size(), at + piece), "bytes lost on the way");
    require(response.is_complete() == is_complete(text.substr(0, response.size())),
            "complete and not, or not and complete");
  }
  require(response.take() == text, "another response than what arrived");
  return 0;
}
