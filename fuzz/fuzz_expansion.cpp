// The expansion of a source and what it includes: its text against the same steps carried out line
// by line, and the places that its bytes come from. The bytes are the files "a", the source, "b"
// and "c", with a form feed between them.

#include <cstdint>
#include <map>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "input.h"
#include "toplistctl/lib/templates/source.h"
#include "util/fields.h"
#include "util/text.h"

namespace {

using toplist::ctl::Expansion;
using toplist::fuzz::require;
using Lines = std::vector<std::string>;
using Sources = std::map<std::string, Lines>;  // by name; each line with its end

Lines lines_of(std::string_view text) {
  Lines lines;
  for (std::size_t size = 0; !text.empty(); text.remove_prefix(size)) {
    size = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.emplace_back(text.substr(0, size));
  }
  return lines;
}

void include(const Sources& sources, const std::string& name, Lines& all) {
  static const std::regex directive("[ \t]*<!-- include[ \t]+([^ \t]+)[ \t]*-->[ \t\r]*\n?");
  for (const std::string& line : sources.at(name)) {
    std::smatch file;
    if (std::regex_match(line, file, directive)) {
      include(sources, file[1], all);
    } else {
      all.push_back(line);
    }
  }
}

std::string at_rank(const std::string& line, int rank) {
  static const std::regex tag("(%%[^\n]{4}|%%[^\n]{6})NNN%%|%%[^\n]{7}%%|%%[^\n]{9}%%|%%");
  std::string text;
  auto rest = line.begin();
  for (std::sregex_iterator i(line.begin(), line.end(), tag), end; i != end; ++i) {
    text.append(rest, (*i)[0].first);
    const std::string digits = std::to_string(1000 + rank).substr(1);
    text += (*i)[1].matched ? (*i)[1].str() + digits + "%%" : i->str();
    rest = (*i)[0].second;
  }
  text.append(rest, line.end());
  toplist::replace_all(text, "{place}", std::to_string(rank + 1));
  return text;
}

/// The text of sources that have no error.
std::string step_by_step(const Sources& sources) {
  static const std::regex repeat("[ \t]*<!-- repeat[ \t]+(\\d+)-(\\d+)[ \t]*-->[ \t\r]*\n?");
  static const std::regex end_repeat("[ \t]*<!-- end repeat[ \t]*-->[ \t\r]*\n?");
  Lines lines;
  include(sources, "a", lines);
  std::string text;
  for (auto line = lines.begin(); line != lines.end(); ++line) {
    std::smatch ranks;
    if (!std::regex_match(*line, ranks, repeat)) {
      text += *line;
      continue;
    }
    const auto first = line + 1;
    while (!std::regex_match(*++line, end_repeat)) {
    }
    for (int rank = std::stoi(ranks[1]); rank <= std::stoi(ranks[2]); ++rank) {
      for (auto body = first; body != line; ++body) text += at_rank(*body, rank);
    }
  }
  return text;
}

/// Each byte is that of its place, or a digit in place of "NNN" or "{place}".
void check_places(const Expansion& expansion, const Sources& sources) {
  std::size_t line = 1, column = 1;
  for (const char byte : expansion.text) {
    const auto from = expansion.place_of(line, column);
    const char source = sources.at(from.file).at(from.line - 1).at(from.column - 1);
    const bool is_digit = byte >= '0' && byte <= '9';
    require(source == byte || (is_digit && std::string_view("N{pla").find(source) < 5), "a place");
    column = byte == '\n' ? 1 : column + 1;
    line += byte == '\n' ? 1 : 0;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size > 1024) return 0;  // what the slow way takes grows with the square of the includes
  toplist::FieldReader texts({reinterpret_cast<const char*>(bytes), size}, '\f');
  std::map<std::string, std::string> files;
  Sources sources;
  for (const char* name : {"a", "b", "c"}) {
    std::string_view text;
    texts.next(text);
    files[name] = text;
    sources[name] = lines_of(text);
  }
  const Expansion expansion = toplist::ctl::expand_source("a", [&files](const std::string& name) {
    const auto file = files.find(name);
    return file == files.end() ? toplist::ctl::Expected<std::string>(toplist::ctl::failure(name))
                               : file->second;
  });
  if (!expansion.errors.empty() || expansion.text.size() > 16UL * 1024) return 0;
  require(expansion.text == step_by_step(sources), "another text than step by step");
  check_places(expansion, sources);
  return 0;
}
