#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// What the command init does for a root that harvests for a site.
namespace toplist::ctl {

inline constexpr const char* kInitHarvestExample =
    "Thumbnails of a site's trades, fetched apart from the runs that build its pages:\n"
    "  toplistctl init --harvest-of /srv/mysite /srv/mysite-harvest";

/// Adds --harvest-of SITE to the command.
CLI::Option* add_harvest_of_option(CLI::App& command, std::string& site);

/// Lays out a root that harvests for the site, tells what is to be done next, and returns the exit
/// status.
int init_harvest(const std::string& site, const std::string& root);

}  // namespace toplist::ctl
