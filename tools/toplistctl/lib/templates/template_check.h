#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "render/tag.h"
#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/site_view/site_view.h"

namespace toplist::ctl {

/// What the faults of a template depend on besides its text.
struct TemplateUse {
  RankedRows shown;         ///< the rows that its tags are expanded against
  std::size_t trades = 0;   ///< the ranks that there are; 0: not known
  std::size_t columns = 0;  ///< the extra columns that the best equipped trade has; 0: not known
};

/// A use in no site: every rank has a trade, and no value brings in a tag.
TemplateUse use_without_site();

/// The use that a toplist of a site makes of its template.
TemplateUse use_in(const SiteView& site, const ToplistView& toplist);

/// Where the byte at this line and column of the template is reported to be.
using PlaceOf = std::function<Place(std::size_t line, std::size_t column)>;

/// Adds the faults of a template; what has the same fault at the same place is told once.
void check_template(std::string_view text, const TemplateUse& use, const PlaceOf& place_of,
                    Diagnostics& findings);

/// Whether the fault of a template keeps values out of the page, or the page from being built.
bool blocks_lines(const Diagnostic& finding);

}  // namespace toplist::ctl
