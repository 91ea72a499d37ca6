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

tl::unexpected<Error> cannot_create(const fs::path& path, int code, std::string advice = "") {
  return tl::unexpected(
      Error{"cannot create", path.string(), code, std::move(advice) + "Nothing was created."});
}

/// Opens a folder of the caller's. A link is not followed: whoever may rename things in `parent`
/// could have put one there.
UniqueFd open_own_folder(int parent, const std::string& name) {
  UniqueFd folder(::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  if (!folder || ::fstat(folder.get(), &status) != 0) return UniqueFd();
  if (status.st_uid == ::geteuid()) return folder;
  errno = EPERM;
  return UniqueFd();
}

/// A private folder in the target, in which a site is built. It is removed with everything that was
/// not moved into the target.
class Draft {
 public:
  explicit Draft(fs::path target)
      : target_(std::move(target)), name_(fmt::format(".new-{}", ::getpid())) {}
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;
  ~Draft() {
    for (auto path = made_.rbegin(); path != made_.rend(); ++path) {
      if (::unlinkat(draft_.get(), path->c_str(), 0) == 0) continue;
      ::unlinkat(draft_.get(), path->c_str(), AT_REMOVEDIR);
    }
    ::unlinkat(folder_.get(), name_.c_str(), AT_REMOVEDIR);
    // Fails unless it is empty.
    if (is_new_) ::unlinkat(parent_.get(), target_.filename().c_str(), AT_REMOVEDIR);
  }

  Expected<void> begin() {
    parent_ = UniqueFd(::open(target_.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!parent_) return refuse(errno);
    is_new_ = ::mkdirat(parent_.get(), target_.filename().c_str(), kNewFolderMode) == 0;
    if (!is_new_ && errno != EEXIST) return refuse(errno);
    folder_ = open_own_folder(parent_.get(), target_.filename());
    if (!folder_) return refuse(errno);
    std::error_code error;
    if (!fs::is_empty(target_, error)) return refuse(error ? error.value() : ENOTEMPTY);
    if (::mkdirat(folder_.get(), name_.c_str(), 0700) != 0) return refuse(errno);
    draft_ = open_own_folder(folder_.get(), name_);
    if (!draft_) return refuse(errno);
    return {};
  }

  Expected<void> fill(const NewSite& site) {
    for (const std::string& path : site.folders) make_folder(path);
    for (const auto& [path, bytes] : site.files) write(path, bytes);
    for (const auto& [path, to] : site.links) link(path, to);
    if (!error_ && site.owner && ::geteuid() == 0) give_to(*site.owner);
    for (const auto& [path, access] : site.access) allow(path, access);
    // A full disk may show only now. This also orders the contents before the names.
    if (!error_ && ::syncfs(draft_.get()) != 0) fail("", errno);
    if (error_) return tl::unexpected(*error_);
    return {};
  }

  /// Moves the contents of the draft into the target, "d" last, and back if that fails.
  Expected<void> put_in_place() {
    std::vector<const char*> moved;
    for (auto path = made_.rbegin(); path != made_.rend(); ++path) {
      if (path->find('/') != std::string::npos) continue;
      if (::renameat(draft_.get(), path->c_str(), folder_.get(), path->c_str()) != 0) {
        fail(*path, errno);
        for (const char* back : moved) ::renameat(folder_.get(), back, draft_.get(), back);
        return tl::unexpected(*error_);
      }
      moved.push_back(path->c_str());
    }
    made_.clear();
    return {};
  }

 private:
  [[nodiscard]] tl::unexpected<Error> refuse(int code) const {
    return cannot_create(target_, code,
                         "Name a new folder in an existing one, or an empty folder of yours. ");
  }

  /// After a failure, nothing more is made.
  void fail(const std::string& path, int code) {
    error_ = cannot_create(path.empty() ? target_ : target_ / path, code).value();
  }

  /// Makes the folder, those above it first. False after a failure.
  bool make_folder(const std::string& path) {
    if (error_ || path.empty() || made_.contains(path)) return !error_;
    if (make_folder(fs::path(path).parent_path())) {
      note(path, ::mkdirat(draft_.get(), path.c_str(), kNewFolderMode));
    }
    return !error_;
  }

  void write(const std::string& path, std::string_view bytes) {
    if (!make_folder(fs::path(path).parent_path())) return;
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    UniqueFd fd(::openat(draft_.get(), path.c_str(), kFlags, kNewFileMode));
    note(path, fd ? 0 : -1);
    if (fd && (!write_fully(fd.get(), bytes) || ::close(fd.release()) != 0)) fail(path, errno);
  }

  void link(const std::string& path, const std::string& to) {
    if (!make_folder(fs::path(path).parent_path())) return;
    note(path, ::symlinkat(to.c_str(), draft_.get(), path.c_str()));
  }

  /// Records the result of the system call that creates `path`.
  void note(const std::string& path, int result) {
    if (result != 0) return fail(path, errno);
    made_.insert(path);
  }

  void give_to(const std::pair<uid_t, gid_t>& owner) {
    const auto& [uid, gid] = owner;
    if (is_new_ && ::fchown(folder_.get(), uid, gid) != 0) fail("", errno);
    for (const std::string& path : made_) {
      if (::fchownat(draft_.get(), path.c_str(), uid, gid, AT_SYMLINK_NOFOLLOW) != 0) {
        fail(path, errno);
      }
    }
  }

  void allow(const std::string& path, const Access& access) const {
    (void)!::fchownat(draft_.get(), path.c_str(), access.uid, access.gid, AT_SYMLINK_NOFOLLOW);
    (void)!::fchmodat(draft_.get(), path.c_str(), access.mode, 0);
  }

  fs::path target_;
  std::string name_;  ///< of the draft
  UniqueFd parent_, folder_, draft_;
  bool is_new_ = false;         ///< the target did not exist
  std::set<std::string> made_;  ///< in the draft; a folder comes before what it holds
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
  Draft draft(path);
  return give_up_root(path)
      .and_then([&] { return draft.begin(); })
      .and_then([&] { return draft.fill(site); })
      .and_then([&] { return draft.put_in_place(); });
}

}  // namespace toplist::ctl
