#include "toplistctl/digest.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "toplist/definitions.h"
#include "util/fields.h"
#include "util/file.h"

namespace toplist::ctl {
namespace {

/// Writes the bytes out to the disk, under the mode and, where possible, the owner of `original`.
bool fill(int fd, std::string_view bytes, const struct stat& original) {
  // The owner first: to change it may take the set-id bits off the mode.
  if (::fchown(fd, original.st_uid, original.st_gid) != 0) {
    // Only root may give files away; to keep at least the group is often possible.
    (void)!::fchown(fd, static_cast<uid_t>(-1), original.st_gid);
  }
  return ::fchmod(fd, original.st_mode & 07777) == 0 && write_fully(fd, bytes) && ::fsync(fd) == 0;
}

/// Writes the directory's names out to the disk.
void sync_folder(const std::string& path) {
  const UniqueFd fd = open_for_reading(path);
  if (fd) ::fsync(fd.get());
}

/// Writes a file beside `path` and gives it that name.
int replace_real_file(const std::filesystem::path& path, std::string_view bytes) {
  struct stat original {};
  if (::stat(path.c_str(), &original) != 0) return errno;
  std::string temporary = path.string() + ".XXXXXX";
  const UniqueFd fd(::mkostemp(temporary.data(), O_CLOEXEC));
  if (!fd) return errno;
  if (!fill(fd.get(), bytes, original) || std::rename(temporary.c_str(), path.c_str()) != 0) {
    const int error = errno;
    ::unlink(temporary.c_str());
    return error;
  }
  sync_folder(path.parent_path());
  return 0;
}

}  // namespace

std::optional<std::string> with_check_value(std::string_view text, std::string_view template_name,
                                            std::string_view check_value) {
  std::string result;
  std::size_t copied = 0;
  bool found = false;
  FieldReader fields(text);
  DefinitionRecord record;
  while (next_record(fields, record) > kCheckValueField) {
    const std::string_view old_value = record[kCheckValueField];
    if (record[kTemplateField] != template_name) continue;
    const auto at = static_cast<std::size_t>(old_value.data() - text.data());
    result.append(text.substr(copied, at - copied)).append(check_value);
    copied = at + old_value.size();
    found = true;
  }
  if (!found) return std::nullopt;
  return result.append(text.substr(copied));
}

int replace_file(const std::string& path, std::string_view bytes) {
  std::error_code error;
  const std::filesystem::path real = std::filesystem::canonical(path, error);
  return error ? error.value() : replace_real_file(real, bytes);
}

}  // namespace toplist::ctl
