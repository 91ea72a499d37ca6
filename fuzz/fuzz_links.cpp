// The choice of a picture link against the same rules carried out step by step in place.

#include <cctype>
#include <cstdint>
#include <string>

#include "harvest/link.h"
#include "input.h"

namespace {

void erase_resuming_behind(std::string& text, const std::string& what, std::size_t count) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
    text.erase(at + what.size() - count, count);
  }
}

std::string value_after(const std::string& tag, const std::string& name, std::size_t from,
                        bool& found) {
  const std::size_t at = tag.find(name, from);
  if (at == std::string::npos) return "";
  const std::size_t end = std::min(tag.find(' ', at), tag.find('>', at));
  found = end != std::string::npos;
  return found ? tag.substr(at + name.size(), end - at - name.size()) : "";
}

std::string step_by_step(std::string chunk, const std::string& host) {
  for (char& c : chunk) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  erase_resuming_behind(chunk, "\"", 1);
  erase_resuming_behind(chunk, "'", 1);
  erase_resuming_behind(chunk, "src= ", 1);
  erase_resuming_behind(chunk, "href= ", 1);

  const std::size_t start = chunk.find("<a ");
  if (start == std::string::npos) return "";
  chunk.erase(0, start);
  const std::size_t end = chunk.find("</a>");
  if (end == std::string::npos) return "";
  chunk.resize(end + 4);

  bool found = false;
  const std::string link = value_after(chunk, "href=", 0, found);
  if (!found || link.find("javascript") != std::string::npos) return "";
  if (link.rfind("http://" + host, 0) != 0 && link.rfind("http://www." + host, 0) != 0 &&
      link.rfind("http://", 0) == 0) {
    return "";
  }
  const std::size_t image = chunk.find("<img ");
  if (image == std::string::npos) return "";
  found = false;
  std::string picture = value_after(chunk, "src=", image, found);
  if (!found) return "";
  if (picture.rfind("http://", 0) == 0) return picture;
  return "http://" + host + (picture.rfind('/', 0) == 0 ? "" : "/") + picture;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  toplist::fuzz::Input input(bytes, size);
  const std::string host =
      toplist::host_of_url(std::string(input.text(input.integer<std::uint8_t>() % 16)));
  const std::string chunk(input.rest());
  toplist::fuzz::require(
      toplist::pick_thumbnail_link(chunk, host).picture == step_by_step(chunk, host),
      "another link than step by step");
  return 0;
}
