#pragma once

#include <string>

#include "toplistctl/commands/check/selection.h"
#include "toplistctl/lib/site_view/site_view.h"

namespace toplist::ctl {

/// How many findings of a kind are told one by one.
enum class Repeats { few, all };

/// The findings as a table, followed by what to do about each kind of them; what has been looked at
/// when there are none.
std::string check_text(const SiteView& site, const Selection& selection, Repeats repeats);

/// {"clean": ..., "less_grave": ..., "findings": [{"kind", "effect", "file", "record", "line",
/// "column", "message", "advice"}]}: all of them, and the places only where they are told.
std::string check_json(const Selection& selection);

}  // namespace toplist::ctl
