#pragma once

#include <string>
#include <string_view>

namespace toplist::ctl {

/// How a page differs from what stands at its path.
struct PageDiff {
  bool differs = false;
  std::string text = {};   ///< Unified, as "diff -u" writes it; empty when they are alike.
  std::string error = {};  ///< Why they could not be compared; empty when they were.
};

/// Compares what stands at `path` with `page`, by the system's diff. Where there is no file, all of
/// the page is new. diff itself tells on standard error when it cannot read the file.
PageDiff compare_with_page(const std::string& path, std::string_view page);

}  // namespace toplist::ctl
