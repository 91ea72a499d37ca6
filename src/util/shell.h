#pragma once

#include <string>
#include <string_view>

namespace toplist {

/// `text` as one word of a shell command: unchanged if it has only letters, digits and . _ : / - ,
/// otherwise in single quotes.
std::string shell_word(std::string_view text);

/// Lets the process have as many descriptors as the system allows, as long as this lives. Commands
/// keep the earlier limit: some programs close all descriptors up to their limit one by one. At
/// most one of these may live at a time.
class RaisedDescriptorLimit {
 public:
  RaisedDescriptorLimit();
  ~RaisedDescriptorLimit();
  RaisedDescriptorLimit(const RaisedDescriptorLimit&) = delete;
  RaisedDescriptorLimit& operator=(const RaisedDescriptorLimit&) = delete;
};

/// Runs a command line through the shell and waits for it. Its exit status does not matter.
void run_shell_command(const std::string& command);

}  // namespace toplist
