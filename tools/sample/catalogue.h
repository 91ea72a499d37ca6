#pragma once

#include <cstddef>
#include <string>

namespace toplist::site {

/// What a trade's page is about. Decides its category column and the scene of its picture.
enum class Theme { outdoors, water, kitchen, photography, games, garden, crafts, music, sky };

const char* theme_name(Theme theme);

/// An invented trade partner. Domains lie under ".example", which is reserved for inventions.
/// Titles and descriptions may hold alternatives separated by ";" and are safe to stand in HTML.
struct CatalogueEntry {
  const char* name;  ///< domain without ".example"
  Theme theme;
  const char* title;
  const char* description;
};

/// The entry of the trade at `index`: the catalogue is gone through again and again.
const CatalogueEntry& catalogue_entry(std::size_t index);

/// The domain of the trade at `index`, numbered from the second time through: "chess-nook.example",
/// "chess-nook-2.example".
std::string catalogue_domain(std::size_t index);

}  // namespace toplist::site
