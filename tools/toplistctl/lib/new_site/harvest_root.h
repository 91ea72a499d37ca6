#pragma once

#include <filesystem>
#include <string>

#include "harvest/harvest_config.h"
#include "toplistctl/lib/diagnostics/error.h"

/// A second root that harvests for a site: a run there fetches the thumbnails and builds no page,
/// so that no partner's server delays the site's own runs.
///
/// It shares the files of a harvest with the site through symbolic links, which still work after
/// the site's programs replace a file. One link, "site", leads to the site. All others go through
/// it:
///
///     site           -> the site's root
///     d/t, d/h       -> site/d/t, site/d/h
///     d/tl/tl.a1     -> site/d/tl/tl.a1
///     l/sys/sys.log  -> site/l/sys/sys.log
///     l/thumbs       -> site/l/thumbs, or as the site calls its thumbnail folder
///     d/tl/vantaig   its own: the site's, with the harvest switched on and thumbnails not required
///     d/tl/tl        its own, and empty: no toplists. Likewise d/tl/tl.ext
///     l/sys/net/     its own: two harvests do not meet there
namespace toplist::ctl {

/// A site for which another root harvests.
struct HarvestedSite {
  std::filesystem::path path;  ///< absolute, without links
  HarvestConfig config;
};

/// Creates such a root at `root`, as create_site() does, for the site at `site`. Its folders for
/// downloads take owner, group and mode of the site's folder of logs. If root creates it, it
/// belongs to the site's owner, with whose rights the site is read.
///
/// The site's thumbnail folder must be a folder below its root, or have an absolute path. Returns
/// the site.
Expected<HarvestedSite> create_harvest_root(const std::string& site, const std::string& root);

/// Whether the working directory is a root that has been created so.
bool is_harvest_root();

}  // namespace toplist::ctl
