#pragma once

#include <cstddef>
#include <string>

#include "toplistctl/lib/templates/expansion.h"
#include "toplistctl/lib/templates/repeat_body.h"

namespace toplist::ctl {

/// What stands in the place of a rank's words.
struct RankTexts {
  explicit RankTexts(int of_rank);

  std::string rank;   ///< in three digits
  std::string place;  ///< counted from 1
};

/// Writes an expansion piece by piece and keeps account of where each comes from.
class ExpansionWriter {
 public:
  explicit ExpansionWriter(Expansion& expansion) : expansion_(expansion) {}

  /// The text of a piece as it stands.
  void add(const Piece& piece);

  /// A piece of a repeat.
  void add(const Piece& piece, const RankTexts& texts);

 private:
  Expansion& expansion_;
  std::size_t line_ = 1;  ///< where in the text the next byte will stand
  std::size_t column_ = 1;
};

}  // namespace toplist::ctl
