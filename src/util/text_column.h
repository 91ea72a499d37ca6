#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace toplist {

inline std::uint32_t hash_of(std::string_view text) {
  return static_cast<std::uint32_t>(std::hash<std::string_view>{}(text));
}

/// A list of texts, usually short, for linear searches. A search compares a text only if its hash
/// matches.
class TextColumn {
 public:
  void append(std::string_view text);
  [[nodiscard]] bool empty() const noexcept { return texts_.empty(); }
  [[nodiscard]] bool contains(std::string_view text) const;

 private:
  std::vector<std::uint32_t> hashes_;
  std::vector<std::string> texts_;
};

/// Finds many texts in one pass over a list: the pass calls find() with each entry.
class SoughtTexts {
 public:
  /// `texts` must outlive this object, which views them.
  explicit SoughtTexts(std::span<const std::string_view> texts);

  /// Calls `found(t)` for each texts[t] that equals the entry, in order, while it returns true.
  template <typename Found>
  void find(std::string_view entry, Found found) const {
    const std::uint32_t hash = hash_of(entry);
    for (std::uint32_t t = first_[hash & mask_]; t != kNone; t = links_[t].next) {
      if (links_[t].hash == hash && texts_[t] == entry && !found(std::size_t{t})) return;
    }
  }

 private:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  /// Texts whose hashes have the same low bits form a chain, in order.
  struct Link {
    std::uint32_t hash;
    std::uint32_t next;
  };

  std::span<const std::string_view> texts_;
  std::uint32_t mask_;
  std::vector<std::uint32_t> first_;  ///< first text of each chain, by the low bits
  std::vector<Link> links_;           ///< one for each text
};

}  // namespace toplist
