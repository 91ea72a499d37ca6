#pragma once

#include <string>

#include "toplistctl/lib/site_view/status.h"

namespace toplist::ctl {

/// For people.
std::string status_text(const SiteStatus& status);
/// For programs, see toplistctl-status(1).
std::string status_json(const SiteStatus& status);
/// In the text format of metrics that node_exporter's textfile collector reads.
std::string status_metrics(const SiteStatus& status);

}  // namespace toplist::ctl
