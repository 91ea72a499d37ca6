#include "toplistctl/lib/new_site/site_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "toplistctl/lib/templates/check_values.h"
#include "util/file.h"

namespace toplist::site {

SiteFolder::SiteFolder(std::filesystem::path root) : root_(std::move(root)) { make_folder(""); }

void SiteFolder::make_folder(std::string_view path) {
  if (!problem_.empty()) return;
  std::error_code error;
  std::filesystem::create_directories(root_ / path, error);
  if (error) fail(root_ / path, error.value());
}

void SiteFolder::write(std::string_view path, std::string_view bytes) {
  write_unlisted(path, bytes);
  if (problem_.empty()) note(path, bytes);
}

void SiteFolder::write_unlisted(std::string_view path, std::string_view bytes) {
  if (!problem_.empty()) return;
  const std::filesystem::path full = root_ / path;
  bool done = try_to_write(full, bytes);
  if (!done && errno == ENOENT) {
    make_folder(std::filesystem::path(path).parent_path().string());
    done = try_to_write(full, bytes);
  }
  if (!done) fail(full, errno);
}

void SiteFolder::write(const SiteTexts& texts) {
  for (const auto& [path, text] : texts) write(path, text);
}

void SiteFolder::link(std::string_view target, std::string_view path, std::string_view bytes) {
  if (!problem_.empty()) return;
  std::error_code error;
  std::filesystem::create_hard_link(root_ / target, root_ / path, error);
  if (error) return write(path, bytes);
  note(path, bytes);
}

bool SiteFolder::try_to_write(const std::string& path, std::string_view bytes) {
  const UniqueFd fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  return fd && write_fully(fd.get(), bytes);
}

void SiteFolder::fail(const std::filesystem::path& path, int error) {
  if (!problem_.empty()) return;
  problem_ = "cannot write " + path.string() + ": " + std::generic_category().message(error);
}

void SiteFolder::note(std::string_view path, std::string_view bytes) {
  written_.append(ctl::check_value_of(bytes)).append("  ").append(path).append("\n");
}

}  // namespace toplist::site
