#include "toplistctl/lib/new_site/harvest_root.h"

#include <fmt/core.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <vector>

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

/// Gives root the rights of the owner of a folder while it lives. Otherwise a link in the folder
/// could show its owner a file that only root may read.
class RightsOfOwner {
 public:
  explicit RightsOfOwner(const struct stat& folder) : groups_(64) {
    if (!is_root_) return;
    const int count = ::getgroups(static_cast<int>(groups_.size()), groups_.data());
    groups_.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    taken_ = ::setgroups(1, &folder.st_gid) == 0 && ::setegid(folder.st_gid) == 0 &&
             ::seteuid(folder.st_uid) == 0;
  }
  RightsOfOwner(const RightsOfOwner&) = delete;
  RightsOfOwner& operator=(const RightsOfOwner&) = delete;
  ~RightsOfOwner() {
    if (!is_root_) return;
    (void)!::seteuid(0);
    (void)!::setegid(group_);
    (void)!::setgroups(groups_.size(), groups_.data());
  }

  [[nodiscard]] bool taken() const { return taken_; }

 private:
  bool is_root_ = ::geteuid() == 0;
  gid_t group_ = ::getegid();
  std::vector<gid_t> groups_;
  bool taken_ = true;
};

Error cannot_share(const std::string& prefix) {
  return {fmt::format("thumbnails under \"{}\" cannot be shared: line 1 of the site's {} must name "
                      "a folder below the site's root, or an absolute path",
                      prefix, kHarvestConfigPath),
          {},
          0,
          {}};
}

/// The folder of a thumbnail prefix below the site's root; empty if the prefix is absolute.
Expected<fs::path> shared_thumbnail_folder(const fs::path& prefix) {
  if (prefix.is_absolute()) return fs::path();
  fs::path folder = prefix.parent_path().lexically_normal();
  if (folder.empty() || folder == "." || *folder.begin() == "..") {
    return tl::unexpected(cannot_share(prefix.string()));
  }
  return folder;
}

/// Makes `path` a link to the same path in the site.
void share(NewSite& root, const fs::path& path) {
  const fs::path target = (kSiteLink / path).lexically_relative(path.parent_path());
  root.links.emplace_back(path.string(), target.string());
}

/// What the site's configuration becomes where nothing but the harvest is done.
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
  // The last one: until then the others lead nowhere, so that none is made through another.
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
  Expected<NewSite> planned;
  {
    const RightsOfOwner rights(status);
    if (!rights.taken()) return failure(fmt::format("cannot act as the owner of {}", site));
    planned = read_file(harvested.path / kHarvestConfigPath).and_then([&](const std::string& text) {
      harvested.config = parse_harvest_config(text, "");
      return root_for(harvested);
    });
  }
  if (!planned) return tl::unexpected(planned.error());
  planned->owner = {status.st_uid, status.st_gid};
  return create_site(root, *planned).map([&] { return harvested; });
}

bool is_harvest_root() { return fs::is_symlink(kSiteLink) && fs::is_symlink(kTradesFolder); }

}  // namespace toplist::ctl
