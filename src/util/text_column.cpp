#include "util/text_column.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace toplist {
namespace {

wchar_t hash_of(std::string_view text) {
  return static_cast<wchar_t>(std::hash<std::string_view>{}(text));
}

/// The first position at or behind `from` that holds `hash`, or the column's size. The C library
/// searches with the widest vector instructions that the processor has.
std::size_t next_hash(std::wstring_view column, wchar_t hash, std::size_t from) {
  return std::min(column.find(hash, from), column.size());
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
  if (texts_.empty()) return std::nullopt;
  const wchar_t hash = hash_of(text);
  for (std::size_t at = next_hash(hashes_, hash, from); at < texts_.size();
       at = next_hash(hashes_, hash, at + 1)) {
    if (texts_[at] == text) return at;
  }
  return std::nullopt;
}

}  // namespace toplist
