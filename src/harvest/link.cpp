#include "harvest/link.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

#include "util/text.h"

namespace toplist {
namespace {

constexpr std::string_view kScheme = "http://";

void remove_prefix(std::string& text, std::string_view prefix) {
  if (text.starts_with(prefix)) text.erase(0, prefix.size());
}

/// Removes a quote character, and skips the character after each one. So the second of two adjacent
/// quotes stays (contract: second-quote).
void remove_quotes(std::string& text, char quote) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == quote && ++i == text.size()) break;
    result += text[i];
  }
  text = std::move(result);
}

/// The text between the first `name` in `tag` and the next blank or ">". Only a space counts as a
/// blank.
std::optional<std::string_view> attribute_value(std::string_view tag, std::string_view name) {
  const std::size_t at = tag.find(name);
  if (at == std::string_view::npos) return std::nullopt;
  const std::string_view rest = tag.substr(at + name.size());
  const std::size_t end = rest.find_first_of(" >");
  if (end == std::string_view::npos) return std::nullopt;
  return rest.substr(0, end);
}

/// The chunk's first link, from "<a " up to and including the "</a>".
std::optional<std::string_view> first_anchor(std::string_view chunk) {
  chunk.remove_prefix(std::min(chunk.find("<a "), chunk.size()));
  const std::size_t end = chunk.find(kLinkEnd);
  if (end == std::string_view::npos) return std::nullopt;
  return chunk.substr(0, end + kLinkEnd.size());
}

/// Whether the link leads to another site with "http://". Other links never count as foreign. The
/// page is in lower case, but the host is spelled as in the trade's address (contract: kept-case).
bool is_foreign(std::string_view link, const std::string& host) {
  if (!link.starts_with(kScheme)) return false;
  link.remove_prefix(kScheme.size());
  return !link.starts_with(host) && !link.starts_with("www." + host);
}

std::string absolute_address(std::string_view picture, const std::string& host) {
  if (picture.starts_with(kScheme)) return std::string(picture);
  const char* slash = picture.starts_with('/') ? "" : "/";
  return std::string(kScheme) + host + slash + std::string(picture);
}

}  // namespace

std::string host_of_url(std::string text) {
  remove_prefix(text, "https://");
  remove_prefix(text, "http://");
  remove_prefix(text, "www.");
  text.resize(std::min(text.find('/'), text.size()));
  text.resize(std::min(text.find('?'), text.size()));
  return text;
}

ThumbnailLink pick_thumbnail_link(std::string chunk, const std::string& host) {
  lower_case(chunk);
  remove_quotes(chunk, '"');
  remove_quotes(chunk, '\'');
  // Removes one blank. A second one then makes the value empty (contract: one-blank).
  replace_all(chunk, "src= ", "src=");
  replace_all(chunk, "href= ", "href=");

  const auto anchor = first_anchor(chunk);
  if (!anchor) return {.refusal = "no link begins with \"<a \""};
  const auto link = attribute_value(*anchor, "href=");
  if (!link) return {.refusal = "the link has no address"};
  if (contains(*link, "javascript")) return {.refusal = "the link is a script"};
  if (is_foreign(*link, host)) return {.refusal = "the link leads to another site"};
  const std::size_t image_tag = anchor->find("<img ");
  if (image_tag == std::string_view::npos) return {.refusal = "the link holds no picture"};
  const auto picture = attribute_value(anchor->substr(image_tag), "src=");
  if (!picture) return {.refusal = "the picture has no address"};
  return {.picture = absolute_address(*picture, host)};
}

}  // namespace toplist
