#pragma once

#include <csignal>
#include <string>
#include <string_view>
#include <vector>

namespace toplist::ctl {

/// The new contents of files, each under another name beside its file until all are to take the
/// files' own names. So at any time either the old or the new ones of a file are there, also after
/// a crash, and no file is replaced unless there is room for all.
///
/// A file that is there keeps its mode, and its owner where the system lets it; a new one gets mode
/// 0666 less the umask. A symbolic link stays one.
///
/// As long as this object lives, interrupts and requests to end wait. They take their course when
/// all files are replaced, or none.
class PreparedFiles {
 public:
  PreparedFiles();
  PreparedFiles(const PreparedFiles&) = delete;
  PreparedFiles& operator=(const PreparedFiles&) = delete;
  ~PreparedFiles();  ///< what has not taken its file's name goes

  /// Returns 0 or the errno of what failed, such as ENOENT when the folder is missing, or EINTR
  /// when the process is asked to end.
  [[nodiscard]] int prepare(const std::string& path, std::string_view bytes);

  /// Writes the prepared contents out to the disk and gives them the files' names, in the order in
  /// which they were prepared. Returns 0 or an errno; the file that failed() names, and those
  /// behind it, are then as they were.
  [[nodiscard]] int replace();

  /// The path of the failure that was returned last.
  [[nodiscard]] const std::string& failed() const { return failed_; }

 private:
  struct File {
    std::string path;  ///< behind all links
    std::string temporary;
  };

  [[nodiscard]] int prepare_file(const std::string& path, std::string_view bytes);
  /// Notes the path; returns errno.
  int fail_at(const std::string& path);

  sigset_t signals_before_{};
  std::vector<File> files_;
  std::size_t replaced_ = 0;  ///< how many of them have their names
  std::string failed_;
};

/// Prepares and replaces one file. Returns 0 or the errno of what failed; the file is then as it
/// was.
[[nodiscard]] int replace_file(const std::string& path, std::string_view bytes);

}  // namespace toplist::ctl
