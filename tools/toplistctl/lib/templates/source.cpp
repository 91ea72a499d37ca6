#include "toplistctl/lib/templates/source.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

#include "render/tag.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "util/fields.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

/// What no source needs that was meant. The first is reached by a circle that the names of the
/// files hide, the second by files that include each other twice, which doubles with each level.
constexpr std::size_t kDeepestInclude = 64;
constexpr std::size_t kMostIncludes = 10'000;
constexpr std::size_t kMostBytes = 1UL << 28;  ///< of text and of the account of its lines

constexpr const char* kTooLarge = "the template becomes too large here";

constexpr std::string_view kPlaceWord = "{place}";
constexpr std::string_view kRankThenMark = "NNN%%";

// --- directives ---

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kBlanksAndEnd = " \t\r\n";
constexpr std::string_view kCommentEnd = "-->";

enum class DirectiveKind { include, repeat, end_repeat };

struct Directive {
  DirectiveKind kind;
  std::size_t column;          ///< of its "<!--", from 1
  std::string_view file = {};  ///< of an include
  int first = 0;               ///< of a repeat: a rank from 0 to 999
  int last = -1;               ///< of a repeat
  std::string error = {};      ///< why it is none, although it begins like one
};

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanksAndEnd) + 1);
}

/// One to three digits; nothing for anything else.
std::optional<int> rank_of(std::string_view text) {
  if (text.empty() || text.size() > kRankDigits) return std::nullopt;
  if (!std::all_of(text.begin(), text.end(), is_digit)) return std::nullopt;
  return parse_int32(text);
}

/// Each of these reads what follows the directive's words; false when it is not as meant.
bool read_name(std::string_view rest, Directive& directive) {
  directive.file = rest;
  return !rest.empty();
}

bool read_ranks(std::string_view rest, Directive& directive) {
  const std::size_t hyphen = std::min(rest.find('-'), rest.size());
  const auto first = rank_of(rest.substr(0, hyphen));
  const auto last = rank_of(rest.substr(std::min(hyphen + 1, rest.size())));
  if (!first || !last || *first > *last) return false;
  directive.first = *first;
  directive.last = *last;
  return true;
}

bool read_nothing(std::string_view rest, Directive& /*directive*/) { return rest.empty(); }

struct Form {
  std::string_view front;  ///< whatever begins with it is meant as this directive
  DirectiveKind kind;
  bool (*read_rest)(std::string_view rest, Directive& directive);
  const char* advice;
};
constexpr std::array<Form, 3> kForms{{
    {"<!-- include", DirectiveKind::include, read_name, "write \"<!-- include FILE -->\""},
    {"<!-- repeat", DirectiveKind::repeat, read_ranks,
     "write \"<!-- repeat FIRST-LAST -->\" with ranks from 0 to 999, the lower one first"},
    {"<!-- end repeat", DirectiveKind::end_repeat, read_nothing, "write \"<!-- end repeat -->\""},
}};

/// Reads the directive that begins with this form's front at this offset of the line.
Directive read_directive(const Form& form, std::string_view line, std::size_t at) {
  Directive directive{.kind = form.kind, .column = at + 1};
  std::string_view rest = line.substr(at + form.front.size());
  rest = rest.substr(0, rest.find_last_not_of(kBlanksAndEnd) + 1);
  const std::size_t end = rest.find(kCommentEnd);
  const bool is_alone = trimmed(line.substr(0, at)).empty() && end != std::string_view::npos &&
                        end + kCommentEnd.size() == rest.size();
  if (!is_alone) {
    directive.error = fmt::format("a directive must be alone on its line: {}", form.advice);
    return directive;
  }
  rest.remove_suffix(kCommentEnd.size());
  const bool word_ends = rest.empty() || kBlanks.find(rest.front()) != std::string_view::npos;
  if (!word_ends || !form.read_rest(trimmed(rest), directive)) {
    directive.error = fmt::format("there is no such directive: {}", form.advice);
  }
  return directive;
}

/// The directive of a line, also one that only begins like a directive.
std::optional<Directive> find_directive(std::string_view line) {
  constexpr std::string_view kCommentBegin = "<!-- ";
  for (std::size_t at = line.find(kCommentBegin); at != std::string_view::npos;
       at = line.find(kCommentBegin, at + 1)) {
    const auto form = std::ranges::find_if(
        kForms, [&](const Form& f) { return line.substr(at).starts_with(f.front); });
    if (form != kForms.end()) return read_directive(*form, line, at);
  }
  return std::nullopt;
}

// --- the lines of a repeat ---

/// A word of a line that the rank replaces.
struct RankWord {
  std::size_t offset;
  bool is_place;  ///< "{place}", otherwise the "NNN" of a tag
};

/// Where "NNN" is in the tag with which the text begins; nothing when it has none.
std::optional<std::size_t> rank_offset(std::string_view text) {
  for (const std::size_t length : {kShortTagLength, kLongTagLength}) {
    const std::size_t offset = length - kRankThenMark.size();
    if (text.size() >= length && text.substr(offset).starts_with(kRankThenMark)) return offset;
  }
  return std::nullopt;
}

/// The length of a tag without "NNN" with which the text begins, or of the mark that opens none.
std::size_t length_without_rank(std::string_view text) {
  if (text.size() < kShortTagLength) return kTagMark.size();
  const auto tag = read_tag(text);
  if (!tag) return kTagMark.size();
  return tag->closes_short ? kShortTagLength : kLongTagLength;
}

/// The words of a line, from left to right. Tags are told apart as in a run: a rank is the "NNN" of
/// a short or a long tag, %%tit_NNN%% or %%rin24_NNN%%, whatever the name and the separator.
std::vector<RankWord> rank_words(std::string_view line) {
  if (line.ends_with(kLineSeparator)) line.remove_suffix(1);
  std::vector<RankWord> words;
  for (std::size_t at = line.find(kPlaceWord); at != std::string_view::npos;
       at = line.find(kPlaceWord, at + kPlaceWord.size())) {
    words.push_back({at, true});
  }
  for (std::size_t at = line.find(kTagMark); at != std::string_view::npos;) {
    const std::string_view text = line.substr(at);
    const auto rank = rank_offset(text);
    if (rank) words.push_back({at + *rank, false});
    at =
        line.find(kTagMark, at + (rank ? *rank + kRankThenMark.size() : length_without_rank(text)));
  }
  std::ranges::sort(words, {}, &RankWord::offset);
  return words;
}

/// A rank, and what replaces the words.
struct RankTexts {
  int rank = Expansion::kNoRank;
  std::string digits = {};
  std::string place = {};
};

// --- the expansion ---

struct SourceLine {
  const SourceFile* file;
  std::uint32_t file_number;
  std::uint32_t number;   ///< from 1
  std::string_view text;  ///< with its end

  [[nodiscard]] Place place(std::size_t column) const {
    return {.file = file->name, .line = number, .column = column};
  }
  /// The bytes that it takes in the expansion.
  [[nodiscard]] std::size_t cost() const { return text.size() + sizeof(Expansion::WrittenLine); }
};

/// Expands a source and what it includes.
class Expander {
 public:
  explicit Expander(const ReadSource& read) : read_(read) {}

  Expansion expand(const std::string& path) {
    if (const Opened& file = open(path)) {
      expand_file(*file);
    } else {
      add_error({.file = path}, file.error().text());
    }
    return std::move(expansion_);
  }

 private:
  using Opened = Expected<std::size_t>;  ///< an index of the expansion's files

  /// A repeat that has begun and not ended.
  struct OpenRepeat {
    std::size_t file;
    Place place;
    int first;
    int last;
  };
  struct BodyLine {
    SourceLine line;
    std::vector<RankWord> words;
  };

  void add_error(const Place& place, const std::string& message) {
    // A file that is included twice has its errors twice.
    if (!told_.emplace(place, message).second) return;
    expansion_.errors.push_back({&kinds::kSourceError, place, message});
  }

  const Opened& open(const std::string& name) {
    const auto [entry, is_new] = opened_.try_emplace(name, 0);
    if (is_new) {
      entry->second = read_(name).map([&](std::string text) {
        expansion_.files.push_back(
            {name, std::filesystem::path(name).lexically_normal(), std::move(text)});
        return expansion_.files.size() - 1;
      });
    }
    return entry->second;
  }

  void expand_file(std::size_t number) {
    const SourceFile& file = expansion_.files[number];
    chain_.push_back(number);
    SourceLine line{&file, static_cast<std::uint32_t>(number), 1, {}};
    for (std::size_t start = 0; start < file.text.size() && !given_up_; ++line.number) {
      const std::size_t feed = std::min(file.text.find(kLineSeparator, start), file.text.size());
      line.text = std::string_view(file.text).substr(start, feed + 1 - start);
      start += line.text.size();
      if (const auto directive = find_directive(line.text)) {
        obey(*directive, line);
      } else {
        add_line(line);
      }
    }
    if (!given_up_) leave(number);
  }

  void add_line(const SourceLine& line) {
    if (!has_room(line.cost())) return give_up(line.place(1), kTooLarge);
    if (repeats_.empty()) return write({line, {}}, {});
    body_.push_back({line, rank_words(line.text)});
  }

  void write(const BodyLine& body, const RankTexts& texts) {
    const auto& [line, words] = body;
    expansion_.lines.push_back(
        {line_, column_, line.file_number, line.number, line.text, texts.rank});
    std::string& text = expansion_.text;
    const std::size_t start = text.size();
    std::size_t copied = 0;
    for (const auto& [offset, is_place] : words) {
      text.append(line.text, copied, offset - copied).append(is_place ? texts.place : texts.digits);
      copied = offset + (is_place ? kPlaceWord.size() : kRankDigits);
    }
    text.append(line.text, copied);
    const bool ends = text.ends_with(kLineSeparator);
    column_ = ends ? 1 : column_ + text.size() - start;
    line_ += ends ? 1 : 0;
  }

  void obey(const Directive& directive, const SourceLine& line) {
    const Place place = line.place(directive.column);
    if (!directive.error.empty()) add_error(place, directive.error);
    switch (directive.kind) {
      case DirectiveKind::include:
        if (directive.error.empty()) include(directive.file, *line.file, place);
        return;
      case DirectiveKind::repeat:  // a wrong one, too: its end is no mistake
        if (!repeats_.empty())
          add_error(place, "a repeat inside a repeat" + begun_at(repeats_.back()));
        repeats_.push_back({line.file_number, place, directive.first, directive.last});
        return;
      case DirectiveKind::end_repeat:
        end_repeat(line.file_number, place);
        return;
    }
  }

  void include(std::string_view name, const SourceFile& from, const Place& place) {
    const Opened& file = open((std::filesystem::path(from.name).parent_path() / name).string());
    if (!file) return add_error(place, file.error().text());
    if (is_open(*file))
      return add_error(place, "files that include each other: " + chain_to(*file));
    if (chain_.size() > kDeepestInclude || ++includes_ > kMostIncludes) {
      return give_up(place, "includes without an end: " + chain_to(*file));
    }
    expand_file(*file);
  }

  void end_repeat(std::size_t file, const Place& place) {
    if (repeats_.empty()) return add_error(place, "no repeat has begun");
    const OpenRepeat repeat = repeats_.back();
    if (repeat.file != file) {
      return add_error(place, "no repeat has begun in this file, but one" + begun_at(repeat));
    }
    repeats_.pop_back();
    if (repeats_.empty()) write_body(repeat);
  }

  void write_body(const OpenRepeat& repeat) {
    const auto times = static_cast<std::size_t>(repeat.last - repeat.first + 1);
    std::size_t bytes = 0;
    for (const BodyLine& body : body_) bytes += body.line.cost();
    if (!has_room(bytes * times)) return give_up(repeat.place, kTooLarge);
    for (int rank = repeat.first; rank <= repeat.last; ++rank) {
      const RankTexts texts{rank, fmt::format("{:03}", rank), std::to_string(rank + 1)};
      for (const BodyLine& body : body_) write(body, texts);
    }
    body_.clear();
  }

  /// At a file's end: a repeat that began there should have ended there.
  void leave(std::size_t file) {
    for (; !repeats_.empty() && repeats_.back().file == file; repeats_.pop_back()) {
      add_error(repeats_.back().place, "the repeat has no end in this file");
    }
    if (repeats_.empty()) body_.clear();
    chain_.pop_back();
  }

  /// Takes so many bytes of room, if there are so many left.
  bool has_room(std::size_t bytes) {
    bytes_ += bytes;
    return bytes_ <= kMostBytes;
  }

  void give_up(const Place& place, const std::string& message) {
    given_up_ = true;
    add_error(place, message);
  }

  /// Whether the file is being expanded, under whatever name.
  [[nodiscard]] bool is_open(std::size_t file) const {
    const auto& files = expansion_.files;
    return std::ranges::any_of(
        chain_, [&](std::size_t open) { return files[open].plain_name == files[file].plain_name; });
  }

  /// The files that are open, and this one.
  [[nodiscard]] std::string chain_to(std::size_t file) const {
    std::string text;
    for (const std::size_t open : chain_) text += expansion_.files[open].name + " -> ";
    return text + expansion_.files[file].name;
  }

  static std::string begun_at(const OpenRepeat& repeat) {
    return fmt::format(" that begins in {}, line {}", repeat.place.file, repeat.place.line);
  }

  const ReadSource& read_;
  Expansion expansion_;
  std::size_t line_ = 1;  ///< where in the text the next byte will be
  std::size_t column_ = 1;
  std::map<std::string, Opened> opened_;  ///< by name
  std::vector<std::size_t> chain_;        ///< from the source to the file that is being expanded
  std::vector<OpenRepeat> repeats_;       ///< more than one only by mistake
  std::vector<BodyLine> body_;            ///< of the repeat, as far as it has been read
  std::set<std::pair<Place, std::string>> told_;
  std::size_t includes_ = 0;
  std::size_t bytes_ = 0;
  bool given_up_ = false;
};

/// The offset in a line of a repeat that the offset in what was written of it comes from.
std::size_t source_offset(std::string_view source, int rank, std::size_t offset) {
  const std::size_t digits = std::to_string(rank + 1).size();
  // The offset is right up to this word: all before it have been reckoned in.
  for (std::size_t word = source.find(kPlaceWord); word < offset;
       word = source.find(kPlaceWord, word + kPlaceWord.size())) {
    if (offset < word + digits) return word;
    offset += kPlaceWord.size() - digits;
  }
  return offset;
}

}  // namespace

Place Expansion::place_of(std::size_t line, std::size_t column) const {
  const auto after = std::upper_bound(lines.begin(), lines.end(), std::pair(line, column),
                                      [](const auto& place, const WrittenLine& written) {
                                        return place < std::pair(written.line, written.column);
                                      });
  if (after == lines.begin()) return {.file = files.front().name, .line = line, .column = column};
  const WrittenLine& from = *(after - 1);
  std::size_t offset = column - (line == from.line ? from.column : 1);
  if (from.rank != kNoRank) offset = source_offset(from.source, from.rank, offset);
  return {.file = files[from.file].name, .line = from.source_line, .column = offset + 1};
}

Expansion expand_source(const std::string& path, const ReadSource& read) {
  return Expander(read).expand(path);
}

}  // namespace toplist::ctl
