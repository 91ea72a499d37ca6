#include "util/text_column.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace toplist {

void TextColumn::append(std::string_view text) {
  hashes_.push_back(hash_of(text));
  texts_.emplace_back(text);
}

bool TextColumn::contains(std::string_view text) const {
  if (empty()) return false;
  const std::uint32_t hash = hash_of(text);
  for (auto at = hashes_.begin(); (at = std::find(at, hashes_.end(), hash)) != hashes_.end();
       ++at) {
    if (texts_[static_cast<std::size_t>(at - hashes_.begin())] == text) return true;
  }
  return false;
}

SoughtTexts::SoughtTexts(std::span<const std::string_view> texts)
    : texts_(texts),
      mask_(static_cast<std::uint32_t>(std::bit_ceil(texts.size() + 1) - 1)),
      first_(std::size_t{mask_} + 1, kNone),
      links_(texts.size()) {
  // Begins with the last text, so that each chain has them in order.
  for (auto t = static_cast<std::uint32_t>(texts.size()); t-- > 0;) {
    const std::uint32_t hash = hash_of(texts[t]);
    links_[t] = {hash, std::exchange(first_[hash & mask_], t)};
  }
}

}  // namespace toplist
