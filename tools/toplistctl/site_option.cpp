#include "toplistctl/site_option.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace toplist::ctl {

void add_site_option(CLI::App& command, std::string& directory) {
  command.add_option("--site", directory, "The site's root, instead of the current directory")
      ->type_name("DIR");
}

bool enter_site(const std::string& directory) {
  if (::chdir(directory.c_str()) == 0) return true;
  std::fprintf(stderr, "toplistctl: cannot enter %s: %s\n", directory.c_str(),
               std::generic_category().message(errno).c_str());
  return false;
}

}  // namespace toplist::ctl
