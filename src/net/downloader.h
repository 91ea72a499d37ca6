#pragma once

#include <string>
#include <string_view>

namespace toplist {

/// An external download command.
struct Downloader {
  std::string_view command;         ///< The command line up to the path of the file to write.
  std::string_view escaped_in_url;  ///< Characters that get a backslash in the quoted address.
};

/// Fetch an address by running a download command through the shell, which writes to `temp_path`.
/// Each returns the file's bytes and deletes the file. It adds a line feed if the bytes do not end
/// with one. Without a file it returns "". The command's exit status does not matter.
///
/// An address with an address_fault() gives "". Characters of the address that are special in the
/// shell or the command are escaped. Callers with the same path share the file.
std::string fetch_with_curl(const std::string& temp_path, const std::string& url);
std::string fetch_with_fetch(const std::string& temp_path, const std::string& url);
std::string fetch_with_wget(const std::string& temp_path, const std::string& url);

/// Why a downloader does not get an address: it contains a control character or begins with "-", so
/// that it looks like an option. Empty if the downloader gets it (contract: control-characters).
std::string_view address_fault(std::string_view url);

/// The shell command line that downloads `url` to `temp_path`.
std::string download_command(const Downloader& downloader, std::string_view temp_path,
                             std::string_view url);

/// Special characters of the shell inside double quotes.
inline constexpr std::string_view kShellSpecials = "\\$`\"";

inline constexpr Downloader kCurl{
    "curl -S --connect-timeout 3 -o ",
    "\\$`\"[]{}"};  // kShellSpecials, and brackets: it would fetch many addresses
inline constexpr Downloader kFetch{"fetch -q -T3 -o ", kShellSpecials};
inline constexpr Downloader kWget{"wget -q -T3 -t1 -O ", kShellSpecials};

}  // namespace toplist
