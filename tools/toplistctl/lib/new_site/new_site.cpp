#include "toplistctl/lib/new_site/new_site.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <set>
#include <system_error>

#include "toplist/definitions.h"
#include "toplistctl/lib/new_site/embedded_files.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "toplistctl/lib/templates/check_values.h"
#include "toplistctl/lib/templates/source.h"
#include "util/file.h"
#include "util/unique_fd.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kNewFolderMode = 0777;

/// The folders of a site that a run reads or writes.
constexpr const char* kFolders[] = {"d/t", "d/h", "d/tl", "d/gr", "l/sys", "l/sys/net", "l/thumbs"};

Expected<std::string> expand(const std::string& source, const NewSite& site) {
  const auto expansion =
      expand_source(source, [&site](const std::string& path) -> Expected<std::string> {
        const auto found = site.files.find(path);
        if (found == site.files.end()) return failure("cannot open " + path);
        return found->second;
      });
  if (expansion.errors.empty()) return expansion.text;
  return failure(fmt::format("{}: {}", source, expansion.errors.front().message));
}

// --- where a site is created ---

tl::unexpected<Error> cannot_create(const fs::path& path, int code) {
  return tl::unexpected(Error{"cannot create", path.string(), code, "Nothing was created"});
}

tl::unexpected<Error> refusal(const fs::path& directory, const char* reason) {
  return failure(fmt::format("{} {}. Nothing was created", directory.string(), reason));
}

/// Where the new folder is to be.
struct Target {
  fs::path path;
  UniqueFd parent;
  UniqueFd existing;  ///< the empty folder, if there is one
};

Expected<Target> open_target(const fs::path& path) {
  Target target;
  target.path = path;
  const fs::path parent = path.parent_path();
  target.parent = UniqueFd(::open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!target.parent) return cannot_create(path, errno);
  const std::string name = path.filename().string();
  struct stat status {};
  if (::fstatat(target.parent.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno != ENOENT) return cannot_create(path, errno);
    return target;
  }
  if (S_ISLNK(status.st_mode)) return refusal(path, "is a symbolic link");
  if (!S_ISDIR(status.st_mode)) return refusal(path, "is not a folder");
  if (status.st_uid != ::geteuid()) return refusal(path, "belongs to another user");
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  target.existing = UniqueFd(::openat(target.parent.get(), name.c_str(), kFlags));
  if (!target.existing) return cannot_create(path, errno);
  std::error_code error;
  const bool empty = fs::is_empty(path, error);
  if (error) return cannot_create(path, error.value());
  if (!empty) return refusal(path, "is not empty");
  return target;
}

/// The private folder in which a site is built. Whatever was not put in place goes with it.
class Draft {
 public:
  explicit Draft(const Target& target)
      : target_(target),
        base_(target.existing ? target.existing.get() : target.parent.get()),
        name_(fmt::format("{}.new-{}", target.existing ? "" : target.path.filename().string(),
                          ::getpid())) {}
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;
  ~Draft() {
    for (auto path = made_.rbegin(); path != made_.rend(); ++path) {
      if (::unlinkat(folder_.get(), path->c_str(), 0) == 0) continue;
      ::unlinkat(folder_.get(), path->c_str(), AT_REMOVEDIR);
    }
    if (folder_) ::unlinkat(base_, name_.c_str(), AT_REMOVEDIR);
  }

  Expected<void> fill(const NewSite& site) {
    if (auto begun = begin(); !begun) return begun;
    for (const std::string& path : site.folders) make_folder(path);
    for (const auto& [path, bytes] : site.files) write(path, bytes);
    for (const auto& [path, to] : site.links) link(path, to);
    if (site.owner && ::geteuid() == 0) give_to(*site.owner);
    for (const auto& [path, access] : site.access) allow(path, access);
    if (error_) return tl::unexpected(*error_);
    return {};
  }

  Expected<void> put_in_place() {
    // A full disk may show only now. This also orders the contents before the names.
    if (::syncfs(folder_.get()) != 0) return cannot_create(target_.path, errno);
    if (target_.existing) return move_entries();
    const mode_t mask = ::umask(0);  // it can only be read by setting it
    ::umask(mask);
    const std::string name = target_.path.filename().string();
    if (::fchmod(folder_.get(), kNewFolderMode & ~mask) != 0 ||
        ::renameat(base_, name_.c_str(), base_, name.c_str()) != 0) {
      return cannot_create(target_.path, errno);
    }
    made_.clear();
    return {};
  }

 private:
  Expected<void> begin() {
    if (::mkdirat(base_, name_.c_str(), 0700) != 0) return cannot_create(target_.path, errno);
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    folder_ = UniqueFd(::openat(base_, name_.c_str(), kFlags));
    struct stat status {};
    if (!folder_ || ::fstat(folder_.get(), &status) != 0) return cannot_create(target_.path, errno);
    // Whoever may rename things here could have put another folder in its place.
    if (status.st_uid != ::geteuid()) return cannot_create(target_.path, EPERM);
    return {};
  }

  /// After a failure, nothing more is made.
  void fail(const std::string& path, int code) {
    if (!error_) error_ = cannot_create(target_.path / path, code).value();
  }

  void make_folder(const std::string& path) {
    if (error_ || path.empty() || made_.contains(path)) return;
    make_folder(fs::path(path).parent_path().string());
    if (error_) return;
    if (::mkdirat(folder_.get(), path.c_str(), kNewFolderMode) != 0) return fail(path, errno);
    made_.insert(path);
  }

  void write(const std::string& path, std::string_view bytes) {
    make_folder(fs::path(path).parent_path().string());
    if (error_) return;
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    UniqueFd fd(::openat(folder_.get(), path.c_str(), kFlags, kNewFileMode));
    if (!fd) return fail(path, errno);
    made_.insert(path);
    if (!write_fully(fd.get(), bytes) || ::close(fd.release()) != 0) fail(path, errno);
  }

  void link(const std::string& path, const std::string& to) {
    make_folder(fs::path(path).parent_path().string());
    if (error_) return;
    if (::symlinkat(to.c_str(), folder_.get(), path.c_str()) != 0) return fail(path, errno);
    made_.insert(path);
  }

  void give_to(const std::pair<uid_t, gid_t>& owner) {
    for (const std::string& path : made_) {
      if (::fchownat(folder_.get(), path.c_str(), owner.first, owner.second, AT_SYMLINK_NOFOLLOW) !=
          0) {
        return fail(path, errno);
      }
    }
    if (::fchown(folder_.get(), owner.first, owner.second) != 0) fail("", errno);
  }

  void allow(const std::string& path, const Access& access) const {
    (void)!::fchownat(folder_.get(), path.c_str(), access.uid, access.gid, AT_SYMLINK_NOFOLLOW);
    ::fchmodat(folder_.get(), path.c_str(), access.mode, 0);
  }

  /// Moves what lies in the draft into the existing folder; back again if that fails.
  Expected<void> move_entries() {
    std::vector<std::string> moved;
    for (const std::string& path : made_) {
      if (path.find('/') != std::string::npos) continue;
      if (::renameat(folder_.get(), path.c_str(), base_, path.c_str()) != 0) {
        const int code = errno;
        for (const auto& back : moved) {
          ::renameat(base_, back.c_str(), folder_.get(), back.c_str());
        }
        return cannot_create(target_.path / path, code);
      }
      moved.push_back(path);
    }
    made_.clear();
    return {};
  }

  const Target& target_;
  int base_;  ///< the folder that it is in
  std::string name_;
  UniqueFd folder_;
  std::set<std::string> made_;  ///< a folder comes before what it holds
  std::optional<Error> error_;
};

}  // namespace

std::string_view content(std::string_view path) {
  const auto files = embedded_files();
  return std::ranges::find(files, path, &EmbeddedFile::path)->bytes();
}

void add_content(NewSite& site, std::string_view folder) {
  for (const EmbeddedFile& file : embedded_files()) {
    std::string_view path = file.path;
    if (!path.starts_with(folder) || path.substr(folder.size(), 1) != "/") continue;
    path.remove_prefix(folder.size() + 1);
    site.files.insert_or_assign(std::string(path), std::string(file.bytes()));
  }
}

Expected<void> install_templates(NewSite& site) {
  std::string& definitions = site.files[kDefinitionsPath];
  std::map<std::string, std::string> templates;
  for (const auto& [path, source] : site.files) {
    if (!path.starts_with(kTemplateFolder) || !path.ends_with(kSourceSuffix)) continue;
    const std::string name = *template_name_of(path);
    auto text = expand(path, site);
    if (!text) return tl::unexpected(text.error());
    if (auto updated = with_check_value(definitions, name, check_value_of(*text))) {
      definitions = std::move(*updated);
    }
    templates[std::string(kTemplateFolder) + name] = std::move(*text);
  }
  for (auto& [path, text] : templates) site.files[path] = std::move(text);
  return {};
}

Expected<NewSite> empty_site() {
  NewSite site;
  site.folders.assign(std::begin(kFolders), std::end(kFolders));
  add_content(site, "empty");
  return install_templates(site).map([&site] { return std::move(site); });
}

Expected<void> create_site(const std::string& directory, const NewSite& site) {
  const fs::path path = fs::absolute(fs::path(directory) / ".").lexically_normal().parent_path();
  if (auto user = give_up_root(path); !user) return user;
  const auto target = open_target(path);
  if (!target) return tl::unexpected(target.error());
  Draft draft(*target);
  if (auto filled = draft.fill(site); !filled) return filled;
  return draft.put_in_place();
}

}  // namespace toplist::ctl
