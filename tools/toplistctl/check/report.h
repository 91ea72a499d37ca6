#pragma once

#include <string>

#include "toplistctl/check/finding.h"
#include "toplistctl/site_view/site_view.h"

namespace toplist::ctl {

/// The findings as a table, followed by what to do about each kind of them; what has been looked at
/// when there are none.
std::string check_text(const SiteView& site, const Findings& findings);

/// {"clean": ..., "findings": [{"kind", "effect", "file", "record", "line", "column", "message",
/// "advice"}]}; the numbers only where they are told.
std::string check_json(const Findings& findings);

}  // namespace toplist::ctl
