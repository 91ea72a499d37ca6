#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "sample/site_writer.h"

namespace toplist::site {

/// A toplist of the sample site: its definition (without the check value), its settings in
/// "d/tl/tl.ext" and the text of its template.
struct Page {
  Definition definition;
  std::vector<std::string> settings;
  std::string template_text;
};

/// The file name of the group that one of the pages is restricted to.
inline constexpr std::string_view kGroupName = "outdoors";

/// `count` toplists: first the designed pages, five or `most_designed`, then plain tables of 100
/// ranks with 10 tags each, over different order-by values, every third with a minimum.
std::vector<Page> make_pages(std::size_t count, std::size_t most_designed);

/// "style.css", shared by all pages.
std::string_view style_sheet();

}  // namespace toplist::site
