#pragma once

#include <string>
#include <string_view>

namespace toplist {

/// `text` as one word of a shell command: as it stands when it holds nothing but letters, digits
/// and . _ : / - , otherwise in single quotes.
std::string shell_word(std::string_view text);

/// Runs a command line through the shell and waits for it. Its exit status does not matter.
void run_shell_command(const std::string& command);

}  // namespace toplist
