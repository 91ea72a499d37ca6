#pragma once

#include <string>
#include <vector>

#include "toplistctl/lib/command_line/command_line.h"

namespace toplist::ctl {

/// What may come as the last word of a command line.
struct AwaitedWord {
  std::string typed;               ///< of the word, so far
  std::string site = ".";          ///< that --site names on the line
  std::string type = {};           ///< of the value, such as "TRADE"; empty for a name
  std::vector<std::string> words;  ///< the commands, the options, or the words the value may be
};

/// Finds the last word of `line` in the program's tree of commands and options. `line` begins after
/// the program's name and includes the word to complete, which may be empty. A "=" may be a
/// separate word, because bash splits words there.
AwaitedWord awaited_word(const Command& program, std::vector<std::string> line);

}  // namespace toplist::ctl
