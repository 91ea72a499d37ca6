#include "toplistctl/lib/templates/expansion.h"

#include <algorithm>
#include <cerrno>
#include <deque>
#include <filesystem>
#include <map>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include "toplistctl/lib/templates/directive.h"
#include "toplistctl/lib/templates/expansion_writer.h"
#include "toplistctl/lib/templates/repeat_body.h"
#include "util/file.h"

namespace toplist::ctl {
namespace {

/// What no source needs that was meant. The first is reached by a circle that the names of the
/// files hide, the second by files that include each other twice, which doubles with each level.
constexpr std::size_t kDeepestInclude = 64;
constexpr std::size_t kMostIncludes = 10'000;
constexpr std::size_t kMostBytes = 1UL << 28;  ///< of text, and of the account of its places

struct SourceFile {
  std::uint32_t number;  ///< among the expansion's files
  std::string name;
  std::string plain_name;  ///< without "." and "..", to tell a circle
  std::string text;
};

/// A repeat that has begun and not ended.
struct OpenRepeat {
  const SourceFile* file;
  SourcePlace place;
  int first;
  int last;
};

/// Expands a source and what it includes.
class Expander {
 public:
  explicit Expander(const ReadSource& read) : read_(read) {}

  Expansion expand(const std::string& path) {
    if (const SourceFile* file = open(path)) {
      expand_file(*file);
    } else {
      add_error({path}, "cannot be opened");
    }
    return std::move(expansion_);
  }

 private:
  void add_error(const SourcePlace& place, const std::string& message) {
    // A file that is included twice has its errors twice.
    if (!told_.insert({place.file, place.line, place.column, message}).second) return;
    expansion_.errors.push_back({place, message});
  }

  /// nullptr when it cannot be opened. The file stays where it is.
  const SourceFile* open(const std::string& name) {
    const auto [entry, is_new] = files_by_name_.try_emplace(name, nullptr);
    if (!is_new) return entry->second;
    std::optional<std::string> text = read_(name);
    if (!text) return nullptr;
    files_.push_back({static_cast<std::uint32_t>(files_.size()), name,
                      std::filesystem::path(name).lexically_normal(), std::move(*text)});
    expansion_.files.push_back(name);
    return entry->second = &files_.back();
  }

  void expand_file(const SourceFile& file) {
    chain_.push_back(&file);
    Piece piece;  // what lies between two directives
    piece.file = file.number;
    std::size_t start = 0;
    while (const auto found = next_directive(file.text, start)) {
      add_lines(file, start, found->begin, piece);
      obey(found->directive, file, {file.name, piece.line, found->comment - found->begin + 1});
      ++piece.line;
      start = found->end;
      if (given_up_) return;
    }
    add_lines(file, start, file.text.size(), piece);
    leave(file);
  }

  /// Adds whole lines of a file, which `piece` is set to; its line then is the one behind them.
  void add_lines(const SourceFile& file, std::size_t begin, std::size_t end, Piece& piece) {
    if (begin == end) return;
    piece.text = std::string_view(file.text).substr(begin, end - begin);
    count_lines(piece);
    if (!make_room(cost_of(piece), {file.name, piece.line, piece.column})) return;
    if (repeats_.empty()) {
      writer_.add(piece);
    } else {
      std::vector<Piece> pieces = compile_body(piece);
      std::move(pieces.begin(), pieces.end(), std::back_inserter(body_));
    }
    piece.line += piece.line_feeds;
  }

  void obey(const Directive& directive, const SourceFile& file, const SourcePlace& place) {
    if (!directive.error.empty()) add_error(place, directive.error);
    switch (directive.kind) {
      case Directive::Kind::include:
        if (directive.error.empty()) include(directive, file, place);
        return;
      case Directive::Kind::repeat:  // a wrong one, too: its end is no mistake
        if (!repeats_.empty()) add_error(place, "a repeat in a repeat" + begun_at(repeats_.back()));
        repeats_.push_back({&file, place, directive.first, directive.last});
        return;
      case Directive::Kind::end_repeat:
        end_repeat(file, place);
        return;
    }
  }

  void include(const Directive& directive, const SourceFile& from, const SourcePlace& place) {
    const std::filesystem::path path = std::filesystem::path(from.name).parent_path();
    const SourceFile* file = open((path / directive.file).string());
    if (file == nullptr) {
      return add_error(place, "cannot open " + (path / directive.file).string());
    }
    if (is_open(*file)) return add_error(place, "a circle: " + chain_text() + file->name);
    if (chain_.size() > kDeepestInclude || ++includes_ > kMostIncludes) {
      given_up_ = true;
      return add_error(place, "includes without end: " + chain_text() + file->name);
    }
    expand_file(*file);
  }

  void end_repeat(const SourceFile& file, const SourcePlace& place) {
    if (repeats_.empty()) return add_error(place, "no repeat has begun");
    const OpenRepeat repeat = repeats_.back();
    if (repeat.file != &file) {
      return add_error(place, "no repeat has begun in this file, but one" + begun_at(repeat));
    }
    repeats_.pop_back();
    if (repeats_.empty()) write_body(repeat);
  }

  void write_body(const OpenRepeat& repeat) {
    const auto times = static_cast<std::size_t>(std::max(0, repeat.last - repeat.first + 1));
    std::size_t bytes = 0;
    for (const Piece& piece : body_) bytes += cost_of(piece);
    if (!make_room(bytes * times, repeat.place)) return;
    for (int rank = repeat.first; rank <= repeat.last; ++rank) {
      const RankTexts texts(rank);
      for (const Piece& piece : body_) writer_.add(piece, texts);
    }
    body_.clear();
  }

  /// At a file's end: a repeat that began there should have ended there.
  void leave(const SourceFile& file) {
    for (; !repeats_.empty() && repeats_.back().file == &file; repeats_.pop_back()) {
      add_error(repeats_.back().place, "the repeat has no end in this file");
    }
    if (repeats_.empty()) body_.clear();
    chain_.pop_back();
  }

  /// The bytes that a piece takes in the expansion.
  static std::size_t cost_of(const Piece& piece) {
    return piece.text.size() + sizeof(Expansion::Stretch);
  }

  /// Whether there is room for so many bytes more, from this place on.
  bool make_room(std::size_t bytes, const SourcePlace& place) {
    bytes_ += bytes;
    given_up_ = bytes_ > kMostBytes;
    if (given_up_) add_error(place, "from here on the expansion is too large");
    return !given_up_;
  }

  [[nodiscard]] bool is_open(const SourceFile& file) const {
    return std::any_of(chain_.begin(), chain_.end(), [&file](const SourceFile* open) {
      return open->plain_name == file.plain_name;
    });
  }

  /// The files that are open, each followed by an arrow.
  [[nodiscard]] std::string chain_text() const {
    std::string text;
    for (const SourceFile* file : chain_) text += file->name + " -> ";
    return text;
  }

  static std::string begun_at(const OpenRepeat& repeat) {
    return " that begins in " + repeat.place.file + ", line " + std::to_string(repeat.place.line);
  }

  const ReadSource& read_;
  Expansion expansion_;
  ExpansionWriter writer_{expansion_};
  std::deque<SourceFile> files_;  ///< pieces are views into their texts
  std::map<std::string, const SourceFile*> files_by_name_;
  std::vector<const SourceFile*> chain_;  ///< from the source to the file that is being expanded
  std::vector<OpenRepeat> repeats_;       ///< more than one only by mistake
  std::vector<Piece> body_;               ///< of the repeat, as far as it has been read
  std::set<std::tuple<std::string, std::size_t, std::size_t, std::string>> told_;
  std::size_t includes_ = 0;
  std::size_t bytes_ = 0;
  bool given_up_ = false;
};

}  // namespace

Expansion expand_source(const std::string& path, const ReadSource& read) {
  return Expander(read).expand(path);
}

std::optional<std::string> read_source_file(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    errno = EISDIR;
    return std::nullopt;
  }
  FileBuffer file;
  if (!file.read(path)) return std::nullopt;
  return std::string(file.text());
}

}  // namespace toplist::ctl
