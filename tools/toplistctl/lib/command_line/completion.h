#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

namespace toplist::ctl {

/// What a shell may offer for the last word of a command line.
struct Completion {
  std::string action;              ///< "directory", "file" or "user": the shell's own; else empty
  std::vector<std::string> words;  ///< that begin as the last word does
};

/// Asks the tree of commands and options below `app`. `line` is what stands behind the program's
/// name, up to and with the word to be completed, which may be empty. A "=" may be a word of its
/// own, as bash tells them. Reads the site that --site names on the line, which becomes the working
/// directory.
Completion complete(const CLI::App& app, std::vector<std::string> line);

}  // namespace toplist::ctl
