#pragma once

#include "util/unique_fd.h"

namespace toplist::ctl {

/// Takes the lock of scheduled runs, kRunLockPath in the working directory, and holds it as long as
/// the result lives: no run sees files of which some are replaced already.
///
/// While another process has it this waits, and says so, or gives up unless `may_wait`. An empty
/// result has been told on standard error.
UniqueFd lock_site(bool may_wait);

}  // namespace toplist::ctl
