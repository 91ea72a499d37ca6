#pragma once

#include <span>
#include <string>

#include "toplistctl/lib/site_view/standing.h"

namespace toplist::ctl {

/// The accounts for people.
std::string why_text(const SiteView& site, std::span<const Account> accounts);

/// {"id", "domain", "active", "toplists": [{"record", "template", "page", "built", "rank", "place",
/// "figure", "reasons": [{"filter", "figure", "minimum"}]}]}, null where there is no such number;
/// a list of these for more than one account.
std::string why_json(std::span<const Account> accounts);

}  // namespace toplist::ctl
