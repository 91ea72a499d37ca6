#pragma once

#include <string>

namespace toplist::ctl {

/// Whether a run could open the page at `path` for writing, or create it there. Only asked, never
/// tried: the file and its folder stay untouched. When not, errno tells why.
bool can_be_written(const std::string& path);

}  // namespace toplist::ctl
