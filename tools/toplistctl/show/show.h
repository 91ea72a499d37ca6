#pragma once

#include <string>
#include <string_view>

#include "toplistctl/check/site_data.h"

/// What a site holds, for people and for programs.
namespace toplist::ctl {

enum class Format { table, json };

/// The trade database, record by record.
std::string show_trades(const SiteData& site, Format format);

/// The toplists: how many trades pass the settings of each now, how many places (ranks) its
/// template names and how many of them it would fill, and how many trades each filter drops. A
/// trade counts for the first filter that drops it.
std::string show_toplists(const SiteData& site, Format format);

/// The system log's text with its times, entities and codes decoded. Other programs write to the
/// log, too: a line of another shape is kept as its subject.
std::string show_log(std::string_view text, Format format);

}  // namespace toplist::ctl
