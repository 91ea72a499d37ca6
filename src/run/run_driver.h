#pragma once

namespace toplist {

/// One whole run in the working directory, which is the site's root: loads the trades, builds their
/// statistics rows and writes every toplist. Every failure goes to the system log; the run then
/// ends or goes on, and the pages of earlier runs stay as they were.
///
/// Throws std::out_of_range, which is meant to end the process, for a template line that ends
/// within a tag (see render_toplist()).
void run_driver();

}  // namespace toplist
