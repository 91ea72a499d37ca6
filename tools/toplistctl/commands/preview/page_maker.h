#pragma once

#include <map>
#include <string>
#include <vector>

#include "toplistctl/lib/output/value.h"

namespace toplist::ctl {

/// All pages of the site at one moment, as the next run would write them, and what the bar above
/// them shows. A template with a source is that source's expansion, installed or not.
struct Snapshot {
  std::map<std::string, std::string> pages;  ///< by the path of their URL, such as "/index.html"
  /// An object: "problem" (why nothing can be shown, or null) and "toplists", a list in the order
  /// of the definitions.
  Members state;
  std::vector<std::string> inputs;  ///< the files that it was made of, other than figures
};

/// Where the preview's own addresses begin. No file of a site has such a path: dot files are
/// private.
inline constexpr std::string_view kOwnFolder = "/.preview/";

/// Looks at the site in the working directory. A page whose template has an error is taken from
/// `before`. `site` is how the user names the site, for commands to copy.
Snapshot make_snapshot(const std::string& site, const Snapshot& before);

}  // namespace toplist::ctl
