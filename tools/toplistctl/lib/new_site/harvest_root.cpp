#include "toplistctl/lib/new_site/harvest_root.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <optional>

#include "harvest/trade_harvest.h"
#include "run/statistics.h"
#include "run/sys_log.h"
#include "toplist/definitions.h"
#include "toplistctl/lib/formats/site_writer.h"
#include "util/file.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSiteLink = "site";
constexpr const char* kTradesFolder = "d/t";
constexpr std::array kShared = {kTradesFolder, "d/h", kExtraColumnsPath, kLogPath};

/// Files made beside the place where they are to be, and then put there in one step.
class Draft {
 public:
  explicit Draft(const fs::path& target) : target_(target), folder_(target.string() + ".XXXXXX") {
    std::string name = folder_.string();
    if (::mkdtemp(name.data()) == nullptr) {
      throw fs::filesystem_error("mkdtemp", target,
                                 std::error_code(errno, std::generic_category()));
    }
    folder_ = name;
    fs::create_directory(root());  // under the umask, unlike the folder around it
  }
  ~Draft() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  [[nodiscard]] fs::path root() const { return folder_ / "root"; }
  void put_in_place() const { fs::rename(root(), target_); }

 private:
  fs::path target_;
  fs::path folder_;
};

/// The folder of a thumbnail prefix below the site's root. Empty when the prefix is absolute, and
/// nothing when the folder is the root itself or outside of it.
std::optional<fs::path> shared_thumbnail_folder(const fs::path& prefix) {
  if (prefix.is_absolute()) return fs::path();
  fs::path folder = prefix.parent_path().lexically_normal();
  if (folder.empty() || folder == "." || *folder.begin() == "..") return std::nullopt;
  return folder;
}

/// Makes `path` in the root at `root` a link to the same path in the site.
void share(const fs::path& root, const fs::path& path) {
  fs::create_directories((root / path).parent_path());
  fs::create_symlink((kSiteLink / path).lexically_relative(path.parent_path()), root / path);
}

void write(const fs::path& path, std::string_view bytes) {
  if (write_file(path.string(), bytes)) return;
  throw fs::filesystem_error("write", path, std::error_code(errno, std::generic_category()));
}

/// What the site's configuration becomes where nothing but the harvest is done.
std::string harvesting(const HarvestConfig& config) {
  return site::encode_harvest_file({.thumb_dir = config.thumb_dir(),
                                    .image_tool = config.image_tool(),
                                    .image_tool_args = config.image_tool_args(),
                                    .unused = config.lines[3],
                                    .fetch_method = config.fetch_method(),
                                    .thumbnail_optional = "1",
                                    .harvest = "1"});
}

/// Lets whoever may write into the folder `example` write into `folder` too, as far as the system
/// lets this be done.
void open_to_writers_of(const fs::path& example, const fs::path& folder) {
  struct stat status {};
  if (::stat(example.c_str(), &status) != 0) return;
  (void)!::chown(folder.c_str(), status.st_uid, status.st_gid);
  ::chmod(folder.c_str(), status.st_mode & 07777);
}

void fill(const fs::path& root, const fs::path& site, const HarvestConfig& config,
          const fs::path& thumbnails) {
  fs::create_directories(root / kDownloadFolder);
  fs::create_directories(root / kTemplateFolder);
  fs::create_directory_symlink(site, root / kSiteLink);
  if (!thumbnails.empty()) share(root, thumbnails);
  for (const char* path : kShared) share(root, path);
  write(root / kHarvestConfigPath, harvesting(config));
  write(root / kDefinitionsPath, "");
  write(root / kSettingsPath, "");
  for (const char* folder : {kLogFolder, kDownloadFolder}) {
    open_to_writers_of(site / kLogFolder, root / folder);
  }
}

}  // namespace

std::string lay_out_harvest_root(const fs::path& site, const fs::path& root) {
  FileBuffer file;
  if (!file.read((site / kHarvestConfigPath).string())) {
    return (site / kHarvestConfigPath).string() + " cannot be opened";
  }
  const HarvestConfig config = parse_harvest_config(file.text(), "");
  const auto thumbnails = shared_thumbnail_folder(config.thumb_dir());
  if (!thumbnails) {
    return "thumbnails under \"" + config.thumb_dir() +
           "\" cannot be shared: line 1 of the site's " + kHarvestConfigPath +
           " has to name a folder below the site's root, or an absolute path";
  }
  const fs::path target = fs::absolute(root / ".").lexically_normal().parent_path();
  std::optional<Draft> draft;
  try {
    draft.emplace(target);
    fill(draft->root(), fs::canonical(site), config, *thumbnails);
    draft->put_in_place();
  } catch (const fs::filesystem_error& error) {
    std::string path = (error.path2().empty() ? error.path1() : error.path2()).string();
    if (draft) replace_all(path, draft->root().string(), target.string());
    return path + ": " + error.code().message();
  }
  return "";
}

bool is_harvest_root() { return fs::is_symlink(kSiteLink) && fs::is_symlink(kTradesFolder); }

}  // namespace toplist::ctl
