#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "toplistctl/lib/diagnostics/error.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

/// The command line: commands describe their options here, and a library parses them. Only the
/// files in this folder include that library, because it takes longer to compile than any command.
namespace toplist::ctl {

/// An option or argument of a command.
class Option {
 public:
  explicit Option(CLI::Option* option) : option_(option) {}
  const Option& required() const;
  const Option& excludes(const Option& other) const;
  const Option& needs(const Option& other) const;

 private:
  CLI::Option* option_;
};

/// A command, or the program as a whole. Names of options begin with "--"; arguments have none.
///
/// Values must live until the command line is parsed and its action has run; hold them by a
/// shared_ptr that the action captures. `type` is what the help calls the value, such as "FILE";
/// the shell completes by it, see commands/complete.cpp.
class Command {
 public:
  /// The action of a command. Returns the exit status, or an error.
  using Action = std::function<Expected<int>()>;

  Command(CLI::App* app, int* exit_status) : app_(app), exit_status_(exit_status) {}

  [[nodiscard]] Command add_command(const std::string& name, const std::string& about) const;
  /// Text below the options in the help: exit statuses, examples.
  void footer(const std::string& text) const;
  /// The command needs one of its own commands after it.
  void require_command() const;
  /// Leaves the command out of the help and of completion.
  void hide() const;
  void run(Action action) const;

  Option flag(const std::string& name, bool& value, const std::string& about) const;
  Option text(const std::string& name, const std::string& type, std::string& value,
              const std::string& about) const;
  Option texts(const std::string& name, const std::string& type, std::vector<std::string>& values,
               const std::string& about) const;
  /// A text that `check` accepts by returning an empty text; otherwise it returns what is wrong.
  Option checked(const std::string& name, const std::string& type, std::string& value,
                 const std::function<std::string(const std::string&)>& check,
                 const std::string& about) const;
  /// One of these words.
  Option choice(const std::string& name, const std::string& type, std::string& value,
                const std::vector<std::string>& words, const std::string& about) const;
  /// A whole number from `least` on.
  Option number(const std::string& name, const std::string& type, std::size_t& value,
                std::size_t least, const std::string& about) const;
  /// A span of time such as 90s, 15m, 2h or 1d; in seconds.
  Option duration(const std::string& name, std::optional<std::int64_t>& seconds,
                  const std::string& about) const;

  /// For the files beside this one.
  [[nodiscard]] CLI::App* app() const { return app_; }
  [[nodiscard]] int* exit_status() const { return exit_status_; }

 private:
  CLI::App* app_;
  int* exit_status_;
};

/// Adds --site DIR, the site's root; "." if not given.
Option add_site_option(const Command& command, std::string& directory);

/// Adds --user NAME, for root.
Option add_user_option(const Command& command, std::string& user);

/// Parses the line, runs the one command that it names, and returns the exit status. Each function
/// adds one command.
int run_command_line(int argc, char** argv, const std::string& about, const std::string& version,
                     std::span<void (*const)(const Command&)> commands);

}  // namespace toplist::ctl
