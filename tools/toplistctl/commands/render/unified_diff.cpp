#include "toplistctl/commands/render/unified_diff.h"

#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include "toplistctl/lib/output/console.h"
#include "util/file.h"
#include "util/uninterrupted.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

/// diff's exit statuses; others mean trouble.
constexpr int kAlike = 0;
constexpr int kDiffer = 1;

std::string text_of_error(int error) { return std::generic_category().message(error); }

/// A file without a name, in memory.
UniqueFd memory_file() { return UniqueFd(::memfd_create("page", MFD_CLOEXEC)); }

std::string text_of(int fd) {
  std::string text(regular_file_size(fd), '\0');
  ::lseek(fd, 0, SEEK_SET);
  text.resize(read_fully(fd, text.data(), text.size()));
  return text;
}

/// Compares the file with standard input.
std::vector<std::string> diff_command(const std::string& path) {
  std::error_code ignored;
  const bool there = fs::is_regular_file(path.c_str(), ignored);
  const std::string name = "--label=" + printable(path);
  return {"diff",
          "--unified",
          "--text",
          name + (there ? " (now)" : " (not there)"),
          name + " (next run)",
          there ? fs::absolute(path.c_str()).string() : "/dev/null",
          "-"};
}

/// Starts a command found on the path; returns 0 or an errno.
int spawn(std::vector<std::string> command, int input, int output, pid_t& child) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  const int error =
      ::posix_spawnp(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  return error;
}

/// The exit status; -1 after an abnormal end.
int wait_for(pid_t child) {
  int ended = 0;
  uninterrupted([&] { return ::waitpid(child, &ended, 0); });
  return WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
}

}  // namespace

PageDiff compare_with_page(const std::string& path, std::string_view page) {
  const UniqueFd input = memory_file();
  const UniqueFd output = memory_file();
  if (!input || !output || !write_fully(input.get(), page)) {
    return {.error = "cannot hold the page in memory: " + text_of_error(errno)};
  }
  ::lseek(input.get(), 0, SEEK_SET);
  pid_t child = 0;
  if (const int error = spawn(diff_command(path), input.get(), output.get(), child)) {
    return {.error = "cannot run the command diff: " + text_of_error(error)};
  }
  const int status = wait_for(child);
  if (status != kAlike && status != kDiffer) return {.error = "diff could not compare it"};
  return {.differs = status == kDiffer, .text = text_of(output.get())};
}

}  // namespace toplist::ctl
