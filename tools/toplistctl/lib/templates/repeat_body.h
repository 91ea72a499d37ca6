#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace toplist::ctl {

/// A run of source text that stands in the expansion as it does in its file, but for the ranks.
struct Piece {
  std::string_view text;            ///< a view into the source
  std::uint32_t file = 0;           ///< its number among the expansion's files
  std::size_t line = 1;             ///< where it begins in its file, from 1
  std::size_t column = 1;           ///< from 1
  std::vector<std::size_t> ranks;   ///< offsets in `text` of each "NNN" that becomes the rank
  bool place_follows = false;       ///< behind it stands "{place}", which becomes the place
  std::size_t line_feeds = 0;       ///< in `text`
  std::size_t after_last_feed = 0;  ///< bytes behind the last of them; all when there is none
};

/// Sets `line_feeds` and `after_last_feed`.
void count_lines(Piece& piece);

/// Splits whole lines of a repeat's body where "{place}" stands and finds the ranks in them.
///
/// A rank is the "NNN" of a short or a long tag, %%tit_NNN%% or %%rin24_NNN%%, whatever the name
/// and the separator; tags are told apart from left to right, as in a run.
std::vector<Piece> compile_body(const Piece& whole);

}  // namespace toplist::ctl
