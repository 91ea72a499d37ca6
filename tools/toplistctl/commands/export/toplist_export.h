#pragma once

#include <string>

#include "toplistctl/lib/output/records.h"
#include "toplistctl/lib/site_view/site_view.h"

namespace toplist::ctl {

/// The ranked trades of a toplist as a run would show them now, for other pages and programs: rank,
/// id, domain, url, figure (the one ranked by), and the extra columns, title to att99, of which
/// there are as many as the trade with most of them has.
///
/// All that pass the toplist's settings are there, also behind the last rank that its template
/// names; of the columns alternatives are picked. Ranks count from 0, as in tags.
std::string export_toplist(const ToplistView& toplist, Format format);

}  // namespace toplist::ctl
