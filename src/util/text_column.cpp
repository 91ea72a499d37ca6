#include "util/text_column.h"

#include <functional>
#include <span>
#include <utility>

namespace toplist {
namespace {

constexpr std::size_t kBlockEntries = 128;

std::uint16_t hash_of(std::string_view text) {
  return static_cast<std::uint16_t>(std::hash<std::string_view>{}(text));
}

/// Whether the block of kBlockEntries hashes holds `hash`. The fixed count and the missing early
/// exit are what lets the compiler use vector instructions.
bool block_holds(const std::uint16_t* block, std::uint16_t hash) {
  std::uint16_t found = 0;
  for (std::size_t i = 0; i < kBlockEntries; ++i) {
    found = static_cast<std::uint16_t>(found | (block[i] == hash ? 1 : 0));
  }
  return found != 0;
}

/// The first position at or behind `from` that holds `hash`, or the column's size.
std::size_t next_hash(std::span<const std::uint16_t> column, std::uint16_t hash, std::size_t from) {
  std::size_t at = from;
  while (at + kBlockEntries <= column.size() && !block_holds(&column[at], hash)) {
    at += kBlockEntries;
  }
  while (at < column.size() && column[at] != hash) ++at;
  return at;
}

}  // namespace

void TextColumn::reserve(std::size_t count) {
  texts_.reserve(count);
  hashes_.reserve(count);
}

void TextColumn::append(std::string text) {
  hashes_.push_back(hash_of(text));
  texts_.push_back(std::move(text));
}

std::optional<std::size_t> TextColumn::find(std::string_view text, std::size_t from) const {
  const std::uint16_t hash = hash_of(text);
  for (std::size_t at = next_hash(hashes_, hash, from); at < texts_.size();
       at = next_hash(hashes_, hash, at + 1)) {
    if (texts_[at] == text) return at;
  }
  return std::nullopt;
}

}  // namespace toplist
