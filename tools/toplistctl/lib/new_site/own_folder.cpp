#include "toplistctl/lib/new_site/own_folder.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include "util/fields.h"
#include "util/file.h"
#include "util/sha1.h"

namespace toplist::site {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kDigestDigits = 40;
constexpr std::size_t kPathAt = kDigestDigits + 2;

struct ListedFile {
  std::string digest;
  fs::path path;  ///< relative to the folder
};

/// Whether the path leads to somewhere below the folder: a list may have been tampered with.
bool stays_below(const fs::path& path) {
  return path.is_relative() && std::ranges::find(path, "..") == path.end();
}

/// The lines of a marker that list a file; the first line, for people, does not.
std::vector<ListedFile> parse_marker(std::string_view text) {
  std::vector<ListedFile> files;
  FieldReader lines(text, kLineSeparator);
  for (std::string_view line; lines.next(line);) {
    if (line.starts_with('#') || line.size() <= kPathAt) continue;
    ListedFile file{std::string(line.substr(0, kDigestDigits)), line.substr(kPathAt)};
    if (stays_below(file.path)) files.push_back(std::move(file));
  }
  return files;
}

std::string cannot_open(const fs::path& path, int error) {
  return "cannot open " + path.string() + ": " + std::generic_category().message(error);
}

struct Look {
  bool is_new = false;  ///< not there, or empty
  std::string problem = {};
};

Look look_at(const fs::path& directory) {
  std::error_code error;
  const fs::file_status status = fs::status(directory, error);
  if (status.type() == fs::file_type::not_found) return {.is_new = true};
  if (status.type() == fs::file_type::none)
    return {.problem = cannot_open(directory, error.value())};
  if (!fs::is_directory(status)) return {.problem = directory.string() + " is not a folder"};
  const bool empty = fs::is_empty(directory, error);
  if (error) return {.problem = cannot_open(directory, error.value())};
  return {.is_new = empty};
}

std::string why_not_again(const fs::path& directory, std::string_view marker) {
  const std::vector<ListedFile> files = parse_marker(marker);
  if (files.empty()) return directory.string() + " was not finished or has no list of its files";
  for (const ListedFile& file : files) {
    const fs::path path = directory / file.path;
    if (sha1_file_hex(path) != file.digest) return path.string() + " has been changed since";
  }
  return {};
}

std::string marker_text(const OwnFolderKind& kind, std::string_view list) {
  return "# Made by toplistctl: " + std::string(kind.name) + ". What it wrote:\n" +
         std::string(list);
}

/// Removes the file, and those of its folders that are then empty.
void remove_file(const fs::path& root, fs::path path) {
  std::error_code failed;  // of a folder that still holds something
  while (!path.empty()) {
    fs::remove(root / path, failed);
    if (failed) return;
    path = path.parent_path();
  }
}

}  // namespace

std::string why_not(const fs::path& directory, const OwnFolderKind& kind, bool replace) {
  const Look look = look_at(directory);
  if (look.is_new || !look.problem.empty()) return look.problem;
  FileBuffer marker;
  if (!marker.read(directory / kind.marker)) {
    if (errno != ENOENT) return cannot_open(directory / kind.marker, errno);
    return directory.string() + " is neither empty nor " + std::string(kind.name);
  }
  if (replace) return {};
  const std::string reason = why_not_again(directory, marker.text());
  return reason.empty() ? reason : reason + "; --replace lays it out anew all the same";
}

std::string why_not_new(const fs::path& directory) {
  const Look look = look_at(directory);
  if (look.is_new || !look.problem.empty()) return look.problem;
  return directory.string() + " is not empty";
}

SiteFolder begin_own_folder(const fs::path& directory, const OwnFolderKind& kind) {
  FileBuffer marker;
  marker.read(directory / kind.marker);
  for (const ListedFile& file : parse_marker(marker.text())) remove_file(directory, file.path);
  SiteFolder folder(directory);
  folder.write_unlisted(kind.marker, marker_text(kind, ""));
  return folder;
}

std::string finish_own_folder(SiteFolder& folder, const OwnFolderKind& kind) {
  folder.write_unlisted(kind.marker, marker_text(kind, folder.written()));
  return folder.problem();
}

}  // namespace toplist::site
