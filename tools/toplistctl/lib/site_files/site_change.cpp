#include "toplistctl/lib/site_files/site_change.h"

#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <exception>
#include <filesystem>
#include <utility>

#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/new_file.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_lock.h"
#include "util/fields.h"
#include "util/number.h"
#include "util/sha1.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

const std::string kFolder = "l/sys/undo";          ///< the last change
const std::string kOldFolder = "l/sys/undo.old";   ///< the one before it
const std::string kNextFolder = "l/sys/undo.new";  ///< one that is being prepared
constexpr const char* kManifest = "/manifest";
constexpr const char* kUnfinished = "/unfinished";
/// The suffix of a file's old contents, until an undo has put them in place.
constexpr std::string_view kOldSuffix = ".toplistctl-old";
constexpr std::string_view kNoDigest = "-";

std::string sha1_of(std::string_view bytes) {
  Sha1Context context;
  sha1_init(context);
  sha1_update(context, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  sha1_final(context);
  return sha1_digest_text(context.digest, DigestText::hexadecimal);
}

/// Whether there is a file. If the system cannot answer, that is an error, not a missing file.
Expected<bool> is_there(const std::string& path) {
  if (::access(path.c_str(), F_OK) == 0) return true;
  if (errno == ENOENT || errno == ENOTDIR) return false;
  return system_error("cannot read", path, errno);
}

/// `act()` if there is such a file.
template <typename Act>
Expected<void> if_there(const std::string& path, const Act& act) {
  return is_there(path).and_then([&act](bool there) { return there ? act() : Expected<void>(); });
}

bool same_file(const std::string& a, const std::string& b) {
  struct stat first {
  }, second{};
  return ::stat(a.c_str(), &first) == 0 && ::stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

/// "2026-11-23 19:14:13", in local time.
std::string time_text(std::time_t time) {
  std::array<char, 32> text{};
  std::tm parts{};
  ::localtime_r(&time, &parts);
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts)};
}

// --- the manifest ---

constexpr std::string_view kReplaced = "replaced", kAdded = "added", kRemoved = "removed";

/// A file of a change.
struct Entry {
  std::string what;    ///< one of the three words above
  std::string digest;  ///< of what the change has put there
  std::string path;
};

struct Manifest {
  std::string command;
  std::string time;
  std::vector<Entry> entries;

  [[nodiscard]] std::string title() const { return fmt::format("{} of {}", command, time); }
  [[nodiscard]] std::string text() const;
};

std::string Manifest::text() const {
  std::string text = fmt::format("{}\n{}\n", command, time);
  for (const Entry& entry : entries) {
    text += fmt::format("{} {} {}\n", entry.what, entry.digest, entry.path);
  }
  return text;
}

Expected<Manifest> read_manifest(const std::string& folder) {
  const auto text = read_file(folder + kManifest);
  if (!text) return tl::unexpected(text.error());
  FieldReader lines(*text, kLineSeparator);
  std::string_view command, time;
  lines.next(command);
  lines.next(time);
  Manifest manifest{std::string(command), std::string(time), {}};
  for (std::string_view line; lines.next(line);) {
    const std::size_t digest = line.find(' ') + 1;
    const std::size_t path = line.find(' ', digest) + 1;
    if (digest == 0 || path == 0) return failure(folder + kManifest + " is damaged");
    manifest.entries.push_back({std::string(line.substr(0, digest - 1)),
                                std::string(line.substr(digest, path - digest - 1)),
                                std::string(line.substr(path))});
  }
  return manifest;
}

std::string kept_file(const std::string& folder, std::size_t index) {
  return fmt::format("{}/{}", folder, index);
}

// --- what a killed command leaves, and undoing ---

bool is_number(const std::string& name) { return std::all_of(name.begin(), name.end(), is_digit); }

/// Removes a folder of kept files, the manifest last.
Expected<void> remove_folder(const std::string& folder) {
  namespace fs = std::filesystem;
  std::error_code error;
  std::vector<std::string> names;
  for (auto entry = fs::directory_iterator(folder, error); !error && entry != fs::end(entry);
       entry.increment(error)) {
    if (is_number(entry->path().filename())) names.push_back(entry->path().string());
  }
  if (error) return system_error("cannot read", folder, error.value());
  for (const char* name : {kUnfinished, kManifest}) names.push_back(folder + name);
  for (const std::string& name : names) {
    if (const auto removed = remove_file(name); !removed) return removed;
  }
  if (::rmdir(folder.c_str()) != 0) return system_error("cannot remove", folder, errno);
  return {};
}

/// Removes a folder and the new contents of its change, which have not taken their places.
Expected<void> drop_change(const std::string& folder) {
  const auto manifest = read_manifest(folder);
  // Without a whole manifest nothing but the folder has been made.
  const int code = manifest ? 0 : manifest.error().code;
  if (code != 0 && code != ENOENT) return tl::unexpected(manifest.error());
  RealPaths paths;
  for (const Entry& entry : manifest ? manifest->entries : std::vector<Entry>()) {
    const auto real = paths.of(entry.path);
    for (const std::string_view suffix : {kNewSuffix, kOldSuffix}) {
      if (real) (void)remove_file(*real + std::string(suffix));
    }
  }
  return remove_folder(folder);
}

/// Puts the old file of an entry back in one step, unless it is there.
Expected<void> put_back(const Entry& entry, const std::string& kept, const std::string& real) {
  if (entry.what == kAdded) return remove_file(real);
  if (same_file(kept, real)) return {};
  const std::string temporary = real + std::string(kOldSuffix);
  return remove_file(temporary)
      .and_then([&] { return link_or_copy(kept, temporary); })
      .and_then([&] { return rename_file(temporary, real); });
}

/// Puts the old files of the last change back wherever its new ones are in place. If the process is
/// killed meanwhile, the change is unfinished, and the next call does the rest. settle() removes
/// the folder.
Expected<void> put_all_back(const Manifest& manifest) {
  auto done = create_file(kFolder + kUnfinished, "").and_then([] { return sync_files({kFolder}); });
  RealPaths paths;
  for (std::size_t i = 0; done && i < manifest.entries.size(); ++i) {
    const Entry& entry = manifest.entries[i];
    const auto real = paths.of(entry.path);
    if (!real) return tl::unexpected(real.error());
    const auto waits = is_there(*real + std::string(kNewSuffix));
    if (!waits) return tl::unexpected(waits.error());
    if (!*waits || entry.what == kRemoved) done = put_back(entry, kept_file(kFolder, i), *real);
  }
  if (!done) return done;
  return sync_files(paths.folders()).and_then([] { return rename_file(kFolder, kNextFolder); });
}

/// Leaves no change in progress: undoes an unfinished one, and removes what is left of changes that
/// have not begun, or are done.
Expected<void> settle() {
  return if_there(kFolder + kUnfinished,
                  [] { return read_manifest(kFolder).and_then(put_all_back); })
      .and_then([] {
        return if_there(kOldFolder, [] {
          return is_there(kFolder).and_then([](bool has_last) {
            return has_last ? remove_folder(kOldFolder) : rename_file(kOldFolder, kFolder);
          });
        });
      })
      .and_then([] { return if_there(kNextFolder, [] { return drop_change(kNextFolder); }); });
}

/// The error of a command that has left an unfinished change; otherwise of one that changed
/// nothing.
Error with_state(Error error) {
  if (!is_there(kFolder + kUnfinished).value_or(true)) return nothing_changed(std::move(error));
  error.detail = "Some files may be changed. Run toplistctl undo.";
  return error;
}

/// The files whose contents are no longer those of the change.
Expected<std::vector<std::string>> changed_since(const Manifest& manifest) {
  std::vector<std::string> paths;
  for (const Entry& entry : manifest.entries) {
    const auto bytes = read_file_if_there(entry.path);
    if (!bytes) return tl::unexpected(bytes.error());
    if ((*bytes ? sha1_of(**bytes) : std::string(kNoDigest)) != entry.digest) {
      paths.push_back(entry.path);
    }
  }
  return paths;
}

}  // namespace

Error nothing_changed(Error error) {
  if (!error.detail.empty()) error.detail += error.detail.ends_with('.') ? " " : ". ";
  error.detail += kNothingChanged;
  return error;
}

SiteChange::~SiteChange() {
  if (!is_under_way_) return;
  try {
    (void)settle();
  } catch (const std::exception&) {
    // The next change does it.
  }
}

Expected<SiteChange> SiteChange::begin(std::string command) {
  Expected<SiteLock> lock = lock_site();
  if (!lock) return tl::unexpected(nothing_changed(lock.error()));
  if (const auto unfinished = unfinished_change()) {
    warn(fmt::format("undoing an unfinished change: {}", *unfinished));
  }
  if (const auto done = settle(); !done) return tl::unexpected(with_state(done.error()));
  return SiteChange(std::move(command), std::move(*lock));
}

void SiteChange::write(std::string path, std::string bytes) {
  steps_.push_back({std::move(path), std::move(bytes)});
}

void SiteChange::remove(std::string path) { steps_.push_back({std::move(path), std::nullopt}); }

Expected<void> SiteChange::commit() {
  if (steps_.empty()) return {};
  is_under_way_ = true;
  const auto done = prepare().and_then([this] { return carry_out(); });
  (void)settle();  // the state shows what it could not do
  is_under_way_ = false;
  return done.map_error(with_state);
}

/// The error with the path that the command knows, which may lead through links.
Error SiteChange::about(const Step& step, Error error) {
  error.path = step.path;
  return error;
}

Expected<void> SiteChange::prepare() {
  Manifest manifest{command_, time_text(std::time(nullptr)), {}};
  for (const Step& step : steps_) {
    if (contains(step.path, "\n")) return failure("cannot write a path with a line break");
    const auto there = is_there(step.path);
    if (!there) return tl::unexpected(there.error());
    const std::string_view what = !step.bytes ? kRemoved : *there ? kReplaced : kAdded;
    manifest.entries.push_back(
        {std::string(what), step.bytes ? sha1_of(*step.bytes) : std::string(kNoDigest), step.path});
  }
  if (::mkdir(kNextFolder.c_str(), 0777) != 0) {
    return system_error("cannot create", kNextFolder, errno);
  }
  std::vector<std::string> written{kNextFolder, kNextFolder + kManifest};
  const auto created = create_file(kNextFolder + kManifest, manifest.text()).and_then([] {
    return create_file(kNextFolder + kUnfinished, "");
  });
  if (!created) return created;
  RealPaths paths;
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    const Step& step = steps_[i];
    if (SiteLock::is_asked_to_end()) return system_error("cannot write", step.path, EINTR);
    const auto real = paths.of(step.path);
    if (!real) return tl::unexpected(about(step, real.error()));
    if (manifest.entries[i].what != kAdded) {
      const auto kept = link_or_copy(*real, kept_file(kNextFolder, i));
      if (!kept) return tl::unexpected(about(step, kept.error()));
    }
    if (!step.bytes) continue;
    if (const auto done = write_new_file(*real, *step.bytes); !done) {
      return tl::unexpected(about(step, done.error()));
    }
    written.push_back(*real + std::string(kNewSuffix));
  }
  return sync_files(written);
}

Expected<void> SiteChange::carry_out() {
  const auto begun = if_there(kFolder, [] { return rename_file(kFolder, kOldFolder); })
                         // From here on a killed process leaves an unfinished change.
                         .and_then([] { return rename_file(kNextFolder, kFolder); })
                         .and_then([] { return sync_files({"l/sys"}); });
  if (!begun) return begun;
  RealPaths paths;
  for (const Step& step : steps_) {
    const auto real = paths.of(step.path);
    if (!real) return tl::unexpected(about(step, real.error()));
    const auto done =
        step.bytes ? rename_file(*real + std::string(kNewSuffix), *real) : remove_file(*real);
    if (!done) return tl::unexpected(about(step, done.error()));
  }
  return sync_files(paths.folders()).and_then([] { return remove_file(kFolder + kUnfinished); });
}

Expected<std::optional<Undone>> undo_last_change(bool force) {
  const Expected<SiteLock> lock = lock_site();
  if (!lock) return tl::unexpected(nothing_changed(lock.error()));
  const auto is_unfinished = is_there(kFolder + kUnfinished);
  if (!is_unfinished) return tl::unexpected(nothing_changed(is_unfinished.error()));
  if (!*is_unfinished) {
    const auto can_undo = settle().and_then([] { return is_there(kFolder); });
    if (!can_undo) return tl::unexpected(nothing_changed(can_undo.error()));
    if (!*can_undo) return std::nullopt;
  }
  const auto manifest = read_manifest(kFolder);
  if (!manifest) return tl::unexpected(nothing_changed(manifest.error()));
  if (!force && !*is_unfinished) {
    const auto changed = changed_since(*manifest);
    if (!changed) return tl::unexpected(nothing_changed(changed.error()));
    if (!changed->empty()) {
      return failure(fmt::format(
          "{} has changed since \"{}\". {} Use --force to undo anyway and lose the later "
          "changes.",
          changed->front(), manifest->title(), kNothingChanged));
    }
  }
  auto done = put_all_back(*manifest);
  // Tries again, so that a temporary failure does not leave some files new and some old.
  if (!done && is_there(kFolder + kUnfinished).value_or(false)) done = put_all_back(*manifest);
  if (!done) return tl::unexpected(with_state(done.error()));
  (void)settle();  // the next change removes what stays
  Undone undone{manifest->title(), {}};
  for (const Entry& entry : manifest->entries) undone.files.push_back(entry.path);
  return undone;
}

std::optional<std::string> unfinished_change() {
  if (!is_there(kFolder + kUnfinished).value_or(false)) return std::nullopt;
  const auto manifest = read_manifest(kFolder);
  return manifest ? manifest->title() : kFolder + " is damaged";
}

}  // namespace toplist::ctl
