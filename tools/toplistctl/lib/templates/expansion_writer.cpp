#include "toplistctl/lib/templates/expansion_writer.h"

#include <algorithm>
#include <utility>

namespace toplist::ctl {
namespace {

constexpr std::size_t kRankDigits = 3;

std::string in_three_digits(int rank) {
  const std::string digits = std::to_string(rank);
  return std::string(kRankDigits - digits.size(), '0') + digits;
}

}  // namespace

RankTexts::RankTexts(int of_rank)
    : rank(in_three_digits(of_rank)), place(std::to_string(of_rank + 1)) {}

void ExpansionWriter::add(const Piece& piece) {
  expansion_.stretches.push_back({line_, column_, piece.line, piece.column, piece.file});
  expansion_.text += piece.text;
  line_ += piece.line_feeds;
  column_ = piece.after_last_feed + (piece.line_feeds == 0 ? column_ : 1);
}

void ExpansionWriter::add(const Piece& piece, const RankTexts& texts) {
  const std::size_t start = expansion_.text.size();
  add(piece);
  for (const std::size_t rank : piece.ranks) {
    texts.rank.copy(expansion_.text.data() + start + rank, kRankDigits);
  }
  if (!piece.place_follows) return;
  expansion_.text += texts.place;
  column_ += texts.place.size();
}

SourcePlace Expansion::place_of(std::size_t line, std::size_t column) const {
  const auto behind = std::upper_bound(stretches.begin(), stretches.end(), std::pair(line, column),
                                       [](const auto& place, const Stretch& stretch) {
                                         return place < std::pair(stretch.line, stretch.column);
                                       });
  if (behind == stretches.begin()) return {files.empty() ? "" : files.front(), line, column};
  const Stretch& stretch = *(behind - 1);
  const bool same_line = line == stretch.line;
  return {files[stretch.file], stretch.source_line + (line - stretch.line),
          same_line ? stretch.source_column + (column - stretch.column) : column};
}

}  // namespace toplist::ctl
