#include "toplistctl/lib/site_files/site_file.h"

#include <cerrno>
#include <utility>

namespace toplist::ctl {

SiteFile::SiteFile(std::string path) : path_(std::move(path)) {
  if (!bytes_.read(path_)) error_ = errno;
}

}  // namespace toplist::ctl
