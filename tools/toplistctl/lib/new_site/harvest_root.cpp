#include "toplistctl/lib/new_site/harvest_root.h"

#include <fmt/core.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>

#include "harvest/trade_harvest.h"
#include "run/statistics.h"
#include "run/sys_log.h"
#include "toplist/definitions.h"
#include "toplistctl/lib/formats/site_writer.h"
#include "toplistctl/lib/new_site/new_site.h"
#include "toplistctl/lib/site_files/read_file.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSiteLink = "site";
constexpr const char* kTradesFolder = "d/t";
constexpr std::array kShared = {kTradesFolder, "d/h", kExtraColumnsPath, kLogPath};

/// Reads the site. Root reads it with the rights of its owner. Otherwise a link in the site could
/// show its owner a file that only root may read. Root does not get its groups back.
template <typename Read>
Expected<NewSite> as_owner(const struct stat& site, const Read& read) {
  const bool is_root = ::geteuid() == 0;
  if (is_root && (::setgroups(1, &site.st_gid) != 0 || ::setegid(site.st_gid) != 0 ||
                  ::seteuid(site.st_uid) != 0)) {
    return failure("cannot act as the owner of the site");
  }
  Expected<NewSite> result = read();
  if (is_root && ::seteuid(0) != 0) return failure("cannot act as root again");
  return result;
}

/// The folder of a thumbnail prefix below the site's root; empty if the prefix is absolute.
Expected<fs::path> shared_thumbnail_folder(const fs::path& prefix) {
  if (prefix.is_absolute()) return fs::path();
  fs::path folder = prefix.parent_path().lexically_normal();
  if (folder.empty() || folder == "." || *folder.begin() == "..") {
    return failure(
        fmt::format("thumbnails under \"{}\" cannot be shared: line 1 of the site's {} must name a "
                    "folder below "
                    "the site's root, or an absolute path",
                    prefix.string(), kHarvestConfigPath));
  }
  return folder;
}

/// Makes `path` a link to the same path in the site.
void share(NewSite& root, const fs::path& path) {
  const fs::path target = (kSiteLink / path).lexically_relative(path.parent_path());
  root.links.emplace_back(path.string(), target.string());
}

/// The site's configuration, changed for a root that only harvests.
std::string harvesting(const HarvestConfig& config) {
  return encode_harvest_file({.thumb_dir = config.thumb_dir(),
                              .image_tool = config.image_tool(),
                              .image_tool_args = config.image_tool_args(),
                              .unused = config.lines[3],
                              .fetch_method = config.fetch_method(),
                              .thumbnail_optional = "1",
                              .harvest = "1"});
}

/// The folders for downloads. Whoever may write the site's log may write there.
void add_downloads(NewSite& root, const fs::path& site) {
  root.folders = {kLogFolder, fs::path(kDownloadFolder).parent_path()};
  struct stat logs {};
  if (::stat((site / kLogFolder).c_str(), &logs) != 0) return;
  for (const std::string& folder : root.folders) {
    root.access[folder] = {logs.st_uid, logs.st_gid, logs.st_mode & 07777U};
  }
}

Expected<NewSite> root_for(const HarvestedSite& site) {
  const auto thumbnails = shared_thumbnail_folder(site.config.thumb_dir());
  if (!thumbnails) return tl::unexpected(thumbnails.error());
  NewSite root;
  root.files = {
      {kHarvestConfigPath, harvesting(site.config)}, {kDefinitionsPath, ""}, {kSettingsPath, ""}};
  add_downloads(root, site.path);
  if (!thumbnails->empty()) share(root, *thumbnails);
  for (const char* path : kShared) share(root, path);
  // This link comes last: until then the others lead nowhere, so none is created through another.
  root.links.emplace_back(kSiteLink, site.path.string());
  return root;
}

}  // namespace

Expected<HarvestedSite> create_harvest_root(const std::string& site, const std::string& root) {
  std::error_code error;
  HarvestedSite harvested{.path = fs::canonical(site, error), .config = {}};
  struct stat status {};
  if (error) return system_error("cannot open", site, error.value());
  if (::stat(harvested.path.c_str(), &status) != 0) return system_error("cannot open", site, errno);
  auto planned = as_owner(status, [&] {
    return read_file(harvested.path / kHarvestConfigPath).and_then([&](const std::string& text) {
      harvested.config = parse_harvest_config(text, "");
      return root_for(harvested);
    });
  });
  if (!planned) return tl::unexpected(planned.error());
  planned->owner = {status.st_uid, status.st_gid};
  return create_site(root, *planned).map([&] { return harvested; });
}

bool is_harvest_root() { return fs::is_symlink(kSiteLink) && fs::is_symlink(kTradesFolder); }

}  // namespace toplist::ctl
