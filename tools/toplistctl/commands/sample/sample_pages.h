#pragma once

#include "toplistctl/commands/sample/sample_site.h"
#include "toplistctl/lib/new_site/site_texts.h"

namespace toplist::site {

/// The pages of a sample site and what belongs to them: sources, templates, definitions, settings,
/// style sheet, configuration.
SiteTexts make_pages(const SampleOptions& options);

}  // namespace toplist::site
