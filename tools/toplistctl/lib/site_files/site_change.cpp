#include "toplistctl/lib/site_files/site_change.h"

#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <exception>
#include <utility>

#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/new_file.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_lock.h"
#include "util/fields.h"
#include "util/sha1.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

const std::string kFolder = "l/sys/undo";          ///< the last change
const std::string kOldFolder = "l/sys/undo.old";   ///< the one before it
const std::string kNextFolder = "l/sys/undo.new";  ///< one that is being prepared
constexpr const char* kManifest = "/manifest";
constexpr const char* kUnfinished = "/unfinished";
/// What is added to a file's name for its old contents, until an undo has them in place.
constexpr std::string_view kOldSuffix = ".toplistctl-old";
constexpr std::string_view kNoDigest = "-";

std::string sha1_of(std::string_view bytes) {
  Sha1Context context;
  sha1_init(context);
  sha1_update(context, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  sha1_final(context);
  return sha1_digest_text(context.digest, DigestText::hexadecimal);
}

bool exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

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

/// Removes a folder of kept files, the manifest last.
Expected<void> remove_folder(const std::string& folder) {
  const auto manifest = read_manifest(folder);
  const std::size_t count = manifest ? manifest->entries.size() : 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (const auto removed = remove_file(kept_file(folder, i)); !removed) return removed;
  }
  for (const char* name : {kUnfinished, kManifest}) {
    if (const auto removed = remove_file(folder + name); !removed) return removed;
  }
  if (::rmdir(folder.c_str()) != 0) return system_error("cannot remove", folder, errno);
  return {};
}

/// Removes a folder and the new contents of its change, which have not taken their places.
Expected<void> drop_change(const std::string& folder) {
  // Without a whole manifest nothing but the folder has been made.
  const auto manifest = read_manifest(folder);
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

/// Puts the old files of the last change back, as far as its new ones are in their places, and
/// removes its folder. When this is ended at any point, the change is an unfinished one, and the
/// next call does the rest.
Expected<void> put_all_back(const Manifest& manifest) {
  auto done = create_file(kFolder + kUnfinished, "").and_then([] { return sync_files({kFolder}); });
  RealPaths paths;
  for (std::size_t i = 0; done && i < manifest.entries.size(); ++i) {
    const Entry& entry = manifest.entries[i];
    const auto real = paths.of(entry.path);
    if (!real) return tl::unexpected(real.error());
    const bool waits = entry.what != kRemoved && exists(*real + std::string(kNewSuffix));
    if (!waits) done = put_back(entry, kept_file(kFolder, i), *real);
  }
  if (!done) return done;
  return sync_files(paths.folders())
      .and_then([] { return rename_file(kFolder, kNextFolder); })
      .and_then(
          [] { return exists(kOldFolder) ? rename_file(kOldFolder, kFolder) : Expected<void>(); })
      .and_then([] { return drop_change(kNextFolder); });
}

/// Brings the site to where no change is under way: undoes an unfinished one, and removes what is
/// left of changes that were not begun, or are done.
Expected<void> settle() {
  Expected<void> done;
  if (exists(kFolder + kUnfinished)) {
    done = read_manifest(kFolder).and_then(put_all_back);
  } else if (exists(kOldFolder)) {
    done = exists(kFolder) ? remove_folder(kOldFolder) : rename_file(kOldFolder, kFolder);
  }
  if (done && exists(kNextFolder)) done = drop_change(kNextFolder);
  return done;
}

/// Which of the files no longer hold what the change has put there.
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
  if (const auto done = settle(); !done) return tl::unexpected(nothing_changed(done.error()));
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
  const auto settled = settle();
  is_under_way_ = false;
  if (done) return {};
  if (!unfinished_change()) return tl::unexpected(nothing_changed(done.error()));
  Error error = done.error();
  error.detail = fmt::format("Some files may be changed: {}. Run toplistctl undo.",
                             settled ? "unfinished" : settled.error().text());
  return tl::unexpected(error);
}

/// The error by the path that the command knows, which may lead through links.
Error SiteChange::about(const Step& step, Error error) {
  error.path = step.path;
  return error;
}

Expected<void> SiteChange::prepare() {
  Manifest manifest{command_, time_text(std::time(nullptr)), {}};
  for (const Step& step : steps_) {
    if (contains(step.path, "\n")) return failure("cannot write a path with a line break");
    const std::string_view what = !step.bytes ? kRemoved : exists(step.path) ? kReplaced : kAdded;
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
  const auto begun = (exists(kFolder) ? rename_file(kFolder, kOldFolder) : Expected<void>())
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
  const bool is_unfinished = unfinished_change().has_value();
  if (const auto done = is_unfinished ? Expected<void>() : settle(); !done) {
    return tl::unexpected(nothing_changed(done.error()));
  }
  if (!exists(kFolder)) return std::nullopt;
  const auto manifest = read_manifest(kFolder);
  if (!manifest) return tl::unexpected(nothing_changed(manifest.error()));
  if (!force && !is_unfinished) {
    const auto changed = changed_since(*manifest);
    if (!changed) return tl::unexpected(nothing_changed(changed.error()));
    if (!changed->empty()) {
      return failure(fmt::format(
          "{} has changed since \"{}\". Undoing loses what was written there since; --force does "
          "it. {}",
          changed->front(), manifest->title(), kNothingChanged));
    }
  }
  if (const auto done = put_all_back(*manifest); !done) return tl::unexpected(done.error());
  Undone undone{manifest->title(), {}};
  for (const Entry& entry : manifest->entries) undone.files.push_back(entry.path);
  return undone;
}

std::optional<std::string> unfinished_change() {
  if (!exists(kFolder + kUnfinished)) return std::nullopt;
  const auto manifest = read_manifest(kFolder);
  return manifest ? manifest->title() : kFolder + " is damaged";
}

}  // namespace toplist::ctl
