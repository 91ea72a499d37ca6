#pragma once

#include <string>
#include <string_view>

namespace toplist {

/// An external download command.
struct Downloader {
  std::string_view command;         ///< The command line up to the path of the file to write.
  std::string_view escaped_in_url;  ///< What gets a backslash in the quoted address.
};

/// Fetch an address by running a download command through the shell, which writes to `temp_path`.
/// Each returns the file's bytes, with a line feed added when they do not end in one, or "" when
/// there is no file; the file is deleted. How the command ended does not matter.
///
/// An address with an address_fault() is refused with "". What the shell or the command would act
/// upon inside the address is escaped. Callers with the same path share the file.
std::string fetch_with_curl(const std::string& temp_path, const std::string& url);
std::string fetch_with_fetch(const std::string& temp_path, const std::string& url);
std::string fetch_with_wget(const std::string& temp_path, const std::string& url);

/// Why an address is not handed to a downloader: it holds a control character or begins with "-",
/// which would be taken for an option. Empty when it is (contract: control-characters).
std::string_view address_fault(std::string_view url);

/// The shell command line that downloads `url` to `temp_path`.
std::string download_command(const Downloader& downloader, std::string_view temp_path,
                             std::string_view url);

/// Inside double quotes the shell acts upon these.
inline constexpr std::string_view kShellSpecials = "\\$`\"";

inline constexpr Downloader kCurl{
    "curl -S --connect-timeout 3 -o ",
    "\\$`\"[]{}"};  // kShellSpecials, and brackets: it would fetch many addresses
inline constexpr Downloader kFetch{"fetch -q -T3 -o ", kShellSpecials};
inline constexpr Downloader kWget{"wget -q -T3 -t1 -O ", kShellSpecials};

}  // namespace toplist
