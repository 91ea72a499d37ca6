#pragma once

#include <cstddef>

#include "toplistctl/lib/new_site/site_folder.h"

namespace toplist::site {

/// Writes the own page of each trade of a sample site, with a picture for the harvest to find.
///
/// The layout is that of a plain file server used as an HTTP proxy: what is asked for as
/// "http://host/path" stands at "http:/host/path". So no name has to be looked up, and nothing
/// outside of this machine is asked. Every seventh partner has no picture.
void write_partner_pages(SiteFolder& folder, std::size_t trades);

}  // namespace toplist::site
