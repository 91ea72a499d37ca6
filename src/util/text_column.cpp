#include "util/text_column.h"

#include <algorithm>
#include <bitset>

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

/// Some texts that are looked for together.
class Batch {
 public:
  /// More would save little: each entry that one text has is sought among all of them.
  static constexpr std::size_t kMostTexts = 512;

  explicit Batch(std::span<const std::string_view> texts) : texts_(texts), left_(texts.size()) {
    for (const std::string_view text : texts) {
      hashes_.push_back(hash_of(text));
      present_.set(low_bits(hashes_.back()));
    }
  }

  /// Whether texts are left to be found.
  [[nodiscard]] bool any_left() const { return left_ > 0; }

  /// The first entry at or behind `from` that a text here may equal, or the number of entries.
  /// Passes over nearly all that none equals.
  [[nodiscard]] std::size_t next_entry(std::wstring_view hashes, std::size_t from) const {
    while (from < hashes.size() && !present_[low_bits(hashes[from])]) ++from;
    return from;
  }

  /// The first text at or behind `from` that equals the entry, or the number of texts.
  [[nodiscard]] std::size_t find(wchar_t hash, std::string_view entry, std::size_t from) const {
    std::size_t at = next_hash(hashes_, hash, from);
    while (at < texts_.size() && texts_[at] != entry) at = next_hash(hashes_, hash, at + 1);
    return at;
  }

  /// Takes a text out. What equals it never has its hash's complement.
  void remove(std::size_t text) {
    hashes_[text] = static_cast<wchar_t>(~hashes_[text]);
    --left_;
  }

 private:
  static constexpr std::size_t kBits = std::size_t{1} << 17;
  static std::size_t low_bits(wchar_t hash) { return static_cast<std::size_t>(hash) % kBits; }

  std::span<const std::string_view> texts_;
  std::size_t left_;
  std::wstring hashes_;
  std::bitset<kBits> present_;  ///< The low bits of hashes that a text here has.
};

}  // namespace

void TextColumn::reserve(std::size_t count) {
  ends_.reserve(count);
  hashes_.reserve(count);
}

void TextColumn::append(std::string_view text) {
  hashes_.push_back(hash_of(text));
  bytes_.append(text);
  ends_.push_back(bytes_.size());
}

std::string_view TextColumn::entry(std::size_t i) const {
  const std::size_t start = i == 0 ? 0 : ends_[i - 1];
  return std::string_view(bytes_).substr(start, ends_[i] - start);
}

bool TextColumn::contains(std::string_view text) const {
  if (empty()) return false;
  const wchar_t hash = hash_of(text);
  std::size_t at = next_hash(hashes_, hash, 0);
  while (at < ends_.size() && entry(at) != text) at = next_hash(hashes_, hash, at + 1);
  return at < ends_.size();
}

void TextColumn::find_each(std::span<const std::string_view> texts, Wanted wanted,
                           const Found& found) const {
  for (std::size_t first = 0; first < texts.size(); first += Batch::kMostTexts) {
    const std::size_t count = std::min(Batch::kMostTexts, texts.size() - first);
    Batch batch(texts.subspan(first, count));
    for (std::size_t e = batch.next_entry(hashes_, 0); e < hashes_.size() && batch.any_left();
         e = batch.next_entry(hashes_, e + 1)) {
      const std::string_view text = entry(e);
      for (std::size_t t = batch.find(hashes_[e], text, 0); t < count;
           t = batch.find(hashes_[e], text, t + 1)) {
        found(first + t, e);
        if (wanted == Wanted::first_entry) batch.remove(t);
      }
    }
  }
}

}  // namespace toplist
