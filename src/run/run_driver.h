#pragma once

namespace toplist {

/// One whole run in the working directory, which is the site's root: loads the trades, builds their
/// statistics rows and writes every toplist. Every failure goes to the system log; the run then
/// ends or goes on, and the pages of earlier runs stay as they were.
///
/// Throws StrayMark, which ends the process, for a template line that ends within a tag (contract:
/// abnormal-stop).
void run_driver();

}  // namespace toplist
