#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "toplistctl/templates/expansion.h"

namespace toplist::test {

/// A byte and where it comes from.
struct Byte {
  char value;
  ctl::SourcePlace from;
};
using Bytes = std::vector<Byte>;

/// Source texts by name, in one folder.
using Sources = std::map<std::string, std::string>;

/// The expansion of a source one step after the other, each over the whole of it: what
/// expand_source() must come to, as text and as places.
class SlowExpansion {
 public:
  explicit SlowExpansion(const Sources& sources) : sources_(sources) {}

  /// Nothing when the sources have an error.
  std::optional<Bytes> expand(const std::string& name) {
    Lines lines = lines_of(name);
    while (splice_first_include(lines)) {
    }
    while (!wrong_ && unroll_first_repeat(lines)) {
    }
    if (wrong_) return std::nullopt;
    Bytes all;
    for (const Line& line : lines) {
      if (matches(line, kDirective)) return std::nullopt;
      all.insert(all.end(), line.bytes.begin(), line.bytes.end());
    }
    return all;
  }

 private:
  struct Line {
    Bytes bytes;
    std::vector<std::string> chain;  ///< the files that are open here
  };
  using Lines = std::vector<Line>;

  inline static const std::regex kDirective{"<!-- (include|repeat|end repeat)"};
  inline static const std::regex kInclude{
      "[ \t]*<!-- include[ \t]+((?!.*-->.*-->)[^ \t].*?)[ \t]*-->[ \t\r]*\n?"};
  inline static const std::regex kRepeat{
      "[ \t]*<!-- repeat[ \t]+(\\d{1,3})-(\\d{1,3})[ \t]*-->[ \t\r]*\n?"};
  inline static const std::regex kEndRepeat{"[ \t]*<!-- end repeat[ \t]*-->[ \t\r]*\n?"};

  static std::string text_of(const Line& line) {
    std::string text;
    for (const Byte& byte : line.bytes) text += byte.value;
    return text;
  }

  static bool matches(const Line& line, const std::regex& pattern) {
    return std::regex_search(text_of(line), pattern);
  }

  static std::optional<std::vector<std::string>> match(const Line& line, const std::regex& form) {
    const std::string text = text_of(line);
    std::smatch match;
    if (!std::regex_match(text, match, form)) return std::nullopt;
    return std::vector<std::string>(match.begin(), match.end());
  }

  Lines lines_of(const std::string& name, std::vector<std::string> chain = {}) {
    chain.push_back(name);
    Lines lines;
    if (!sources_.contains(name)) wrong_ = true;
    ctl::SourcePlace place{name, 1, 1};
    bool begins = true;
    for (const char c : wrong_ ? std::string() : sources_.at(name)) {
      if (begins) lines.push_back({{}, chain});
      lines.back().bytes.push_back({c, place});
      ++place.column;
      begins = c == '\n';
      if (begins) place = {name, place.line + 1, 1};
    }
    return lines;
  }

  bool splice_first_include(Lines& lines) {
    const auto line = std::find_if(lines.begin(), lines.end(),
                                   [](const Line& l) { return match(l, kInclude).has_value(); });
    if (line == lines.end()) return false;
    const std::string file = match(*line, kInclude)->at(1);
    const std::vector<std::string> chain = line->chain;
    wrong_ = wrong_ || std::find(chain.begin(), chain.end(), file) != chain.end();
    const Lines included = wrong_ ? Lines() : lines_of(file, chain);
    const auto at = lines.erase(line);
    lines.insert(at, included.begin(), included.end());
    return true;
  }

  bool unroll_first_repeat(Lines& lines) {
    const auto begin = std::find_if(lines.begin(), lines.end(),
                                    [](const Line& l) { return matches(l, kDirective); });
    if (begin == lines.end()) return false;
    const auto end =
        std::find_if(begin + 1, lines.end(), [](const Line& l) { return matches(l, kDirective); });
    const auto range = match(*begin, kRepeat);
    wrong_ = !range || end == lines.end() || !match(*end, kEndRepeat) || end->chain != begin->chain;
    if (wrong_) return false;
    const int last = std::stoi(range->at(2));
    wrong_ = std::stoi(range->at(1)) > last;
    Lines unrolled;
    for (int rank = std::stoi(range->at(1)); rank <= last; ++rank) {
      for (auto line = begin + 1; line != end; ++line) unrolled.push_back(at_rank(*line, rank));
    }
    const auto at = lines.erase(begin, end + 1);
    lines.insert(at, unrolled.begin(), unrolled.end());
    return true;
  }

  static Line at_rank(Line line, int rank) {
    const std::string digits = std::to_string(1000 + rank).substr(1);
    for (std::size_t at = 0; (at = text_of(line).find("%%", at)) != std::string::npos;) {
      at += put_rank(line, at, digits);
    }
    for (std::size_t at = 0; (at = text_of(line).find("{place}", at)) != std::string::npos;) {
      const std::string place = std::to_string(rank + 1);
      const auto byte = line.bytes.begin() + static_cast<std::ptrdiff_t>(at);
      for (std::size_t i = 0; i < place.size(); ++i) byte[static_cast<long>(i)].value = place[i];
      line.bytes.erase(byte + static_cast<std::ptrdiff_t>(place.size()), byte + 7);
      at += place.size();
    }
    return line;
  }

  /// Puts the rank into the tag at this place, if there is one that names it. Returns how much of
  /// the line is done.
  static std::size_t put_rank(Line& line, std::size_t at, const std::string& digits) {
    std::string text = text_of(line).substr(at);
    if (text.ends_with('\n')) text.pop_back();
    text.resize(std::max<std::size_t>(text.size(), 13), '\n');
    for (const std::size_t rank : {6U, 8U}) {
      if (text.substr(rank, 5) != "NNN%%") continue;
      for (std::size_t i = 0; i < 3; ++i) line.bytes[at + rank + i].value = digits[i];
      return rank + 5;
    }
    if (text.substr(9, 2) == "%%") return 11;
    return text.substr(11, 2) == "%%" ? 13 : 2;
  }

  const Sources& sources_;
  bool wrong_ = false;
};

inline constexpr std::size_t kMostSlowBytes = 16UL * 1024;

/// What differs between the two expansions of the source "a"; empty when nothing does, or when the
/// expansion is too large to be done slowly.
inline std::string difference(const Sources& sources) {
  const ctl::Expansion expansion =
      ctl::expand_source("a", [&sources](const std::string& name) -> std::optional<std::string> {
        const auto entry = sources.find(name);
        return entry == sources.end() ? std::nullopt : std::optional(entry->second);
      });
  if (expansion.text.size() > kMostSlowBytes) return "";
  const auto expected = SlowExpansion(sources).expand("a");
  if (!expected) return expansion.errors.empty() ? "an error is missed" : "";
  if (!expansion.errors.empty()) return "no error: " + expansion.errors.front().message;
  std::size_t line = 1;
  std::size_t column = 1;
  std::string text;
  for (const Byte& byte : *expected) {
    if (expansion.place_of(line, column) != byte.from) return "another place behind: " + text;
    text += byte.value;
    ++column;
    if (byte.value != '\n') continue;
    ++line;
    column = 1;
  }
  return expansion.text == text ? "" : "another text: " + expansion.text + "\nnot: " + text;
}

}  // namespace toplist::test
