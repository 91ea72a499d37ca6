#pragma once

#include <cstddef>
#include <ctime>
#include <string>

#include "toplistctl/lib/diagnostics/error.h"

namespace toplist::ctl {

struct ReportOptions {
  /// How many partners get a picture, a 30-day line and a section; the others a line of figures.
  std::size_t top = 100;
  std::string history = {};  ///< a database that must be there; the site's own one if empty
  std::time_t now = std::time(nullptr);
};

/// The operator's report on the site in the working directory: one HTML page that loads nothing.
/// An error when "d/t/index" or the history cannot be read.
Expected<std::string> report_page(const ReportOptions& options);

}  // namespace toplist::ctl
