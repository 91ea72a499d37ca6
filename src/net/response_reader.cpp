#include "net/response_reader.h"

#include <algorithm>
#include <charconv>

#include "util/fields.h"
#include "util/number.h"
#include "util/text.h"

namespace toplist {
namespace {

constexpr std::string_view kBlanks = " \t";

/// The end of the first empty line at or after `from`, which ends a head; npos without one.
std::size_t end_of_head(std::string_view text, std::size_t from) {
  for (std::size_t at = text.find('\n', from); at != text.npos; at = text.find('\n', at + 1)) {
    const std::string_view rest = text.substr(at + 1);
    if (rest.starts_with('\n')) return at + 2;
    if (rest.starts_with("\r\n")) return at + 3;
  }
  return text.npos;
}

/// Whether the status is one of a final response that may have a body: 1xx responses are followed
/// by another one, and 204 and 304 have no body, whatever length they announce.
bool may_have_body(std::string_view status) {
  return status.size() == 3 && std::all_of(status.begin(), status.end(), is_digit) &&
         status.front() >= '2' && status.front() <= '5' && status != "204" && status != "304";
}

/// The second word of the line; nothing if the line does not begin an HTTP response.
std::string_view status_of(std::string_view line) {
  if (!line.starts_with("HTTP/")) return {};
  line.remove_prefix(std::min(line.find(' '), line.size()));
  const std::string_view words = trimmed(line);
  return words.substr(0, words.find_first_of(kBlanks));
}

std::optional<std::uint64_t> parse_length(std::string_view text) {
  std::uint64_t length = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, length);
  if (error != std::errc() || stop != end) return std::nullopt;
  return length;
}

struct Header {
  std::string name;  ///< in lower case
  std::string_view value;
};

/// Nothing for a line without a name directly before a colon, such as a folded line: programs read
/// such lines in different ways.
std::optional<Header> split_header(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == 0 || line.find_first_of(kBlanks) < colon || colon == line.npos) return std::nullopt;
  Header header{std::string(line.substr(0, colon)), trimmed(line.substr(colon + 1))};
  lower_case(header.name);
  return header;
}

/// Takes the next line of a head, without its end; false at the empty line.
bool next_line(FieldReader& lines, std::string_view& line) {
  if (!lines.next(line)) return false;
  if (line.ends_with('\r')) line.remove_suffix(1);
  return !line.empty();
}

}  // namespace

std::optional<std::uint64_t> announced_length(std::string_view head) {
  FieldReader lines(head, kLineSeparator);
  std::string_view line;
  if (!next_line(lines, line) || !may_have_body(status_of(line))) return std::nullopt;
  std::optional<std::uint64_t> length;
  while (next_line(lines, line)) {
    const auto header = split_header(line);
    if (!header || header->name == "transfer-encoding") return std::nullopt;
    if (header->name != "content-length") continue;
    if (length) return std::nullopt;  // twice; the same number or not
    length = parse_length(header->value);
    if (!length) return std::nullopt;
  }
  return length;
}

void ResponseReader::append(std::string_view bytes) {
  // An empty line may have begun with the last two bytes of the earlier text: "\n\r".
  const std::size_t from = std::max<std::size_t>(bytes_.size(), 2) - 2;
  bytes_ += bytes;
  if (body_start_ != 0) return;
  const std::size_t end = end_of_head(bytes_, from);
  if (end == std::string::npos) return;
  body_start_ = end;
  body_bytes_ = announced_length(std::string_view(bytes_).substr(0, end));
}

}  // namespace toplist
