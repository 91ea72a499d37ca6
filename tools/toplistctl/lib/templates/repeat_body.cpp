#include "toplistctl/lib/templates/repeat_body.h"

#include <algorithm>

#include "render/tag.h"
#include "util/fields.h"

namespace toplist::ctl {
namespace {

constexpr std::string_view kPlaceWord = "{place}";
constexpr std::string_view kRankThenMark = "NNN%%";

struct FoundRank {
  std::size_t offset;  ///< of "NNN", from the tag's start
  std::size_t length;  ///< of the tag
};

/// The rank of a tag with which the text begins.
FoundRank find_rank(std::string_view text) {
  for (const std::size_t length : {kShortTagLength, kLongTagLength}) {
    if (text.size() < length) break;
    const std::size_t offset = length - kRankThenMark.size();
    if (text.substr(offset, kRankThenMark.size()) == kRankThenMark) return {offset, length};
  }
  return {std::string_view::npos, 0};
}

/// How much of the text to pass over for a mark without "NNN": the tag, or the mark alone when it
/// opens none.
std::size_t length_without_rank(std::string_view text) {
  if (text.size() < kShortTagLength) return kTagMark.size();
  const auto tag = read_tag(text);
  if (!tag) return kTagMark.size();
  return tag->closes_short ? kShortTagLength : kLongTagLength;
}

/// Adds the ranks of one line, which stands at `start` in its piece.
void add_ranks(std::string_view line, std::size_t start, std::vector<std::size_t>& ranks) {
  std::size_t mark = line.find(kTagMark);
  while (mark != std::string_view::npos) {
    const std::string_view text = line.substr(mark);
    const FoundRank rank = find_rank(text);
    const bool found = rank.length != 0;
    if (found) ranks.push_back(start + mark + rank.offset);
    mark = line.find(kTagMark, mark + (found ? rank.length : length_without_rank(text)));
  }
}

std::vector<std::size_t> ranks_in(std::string_view text) {
  std::vector<std::size_t> ranks;
  FieldReader lines(text, kLineSeparator);
  for (std::string_view line; lines.next(line);) {
    add_ranks(line, static_cast<std::size_t>(line.data() - text.data()), ranks);
  }
  return ranks;
}

/// The piece that begins where this one and the word behind it end.
Piece piece_behind(const Piece& piece) {
  Piece next;
  next.file = piece.file;
  next.line = piece.line + piece.line_feeds;
  next.column =
      piece.after_last_feed + kPlaceWord.size() + (piece.line_feeds == 0 ? piece.column : 1);
  return next;
}

}  // namespace

void count_lines(Piece& piece) {
  const std::string_view text = piece.text;
  piece.line_feeds = static_cast<std::size_t>(std::count(text.begin(), text.end(), kLineSeparator));
  piece.after_last_feed = text.size() - (text.rfind(kLineSeparator) + 1);  // npos + 1 is 0
}

std::vector<Piece> compile_body(const Piece& whole) {
  const std::vector<std::size_t> ranks = ranks_in(whole.text);
  std::vector<Piece> pieces;
  Piece piece = whole;
  auto rank = ranks.begin();
  for (std::size_t start = 0; start < whole.text.size();) {
    const std::size_t word = whole.text.find(kPlaceWord, start);
    const std::size_t end = std::min(word, whole.text.size());
    piece.text = whole.text.substr(start, end - start);
    piece.place_follows = word != std::string_view::npos;
    for (; rank != ranks.end() && *rank < end; ++rank) piece.ranks.push_back(*rank - start);
    count_lines(piece);
    pieces.push_back(piece);
    piece = piece_behind(piece);
    start = end + kPlaceWord.size();
  }
  return pieces;
}

}  // namespace toplist::ctl
