#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace toplist::site {

/// An invented trade partner: a line of site/partners.txt. Titles and descriptions may hold
/// alternatives separated by ";" and are safe to stand in HTML.
struct Partner {
  std::string_view name;   ///< domain without ".example"
  std::string_view topic;  ///< the category column
  std::string_view group;  ///< the group file in "d/gr/" that lists it; empty: none
  std::string_view language;
  std::string_view since;  ///< the year
  std::string_view title;
  std::string_view description;
};

std::size_t partner_count();

/// The partner of the trade at `index`: the table is gone through again and again.
const Partner& partner_of(std::size_t index);

/// The domain of the trade at `index`, numbered from the second time through: "chess-nook.example",
/// "chess-nook-2.example". They lie under ".example", which is reserved for inventions.
std::string partner_domain(std::size_t index);

/// The bytes of the partner's picture, a JPEG file.
std::string_view partner_picture(const Partner& partner);

}  // namespace toplist::site
