#include "net/downloader.h"

#include <unistd.h>

#include "util/file.h"
#include "util/shell.h"
#include "util/text.h"

namespace toplist {
namespace {

std::string download(const Downloader& downloader, const std::string& temp_path,
                     const std::string& url) {
  if (!address_fault(url).empty()) return "";
  run_shell_command(download_command(downloader, temp_path, url));
  FileBuffer file;
  file.read(temp_path);
  ::unlink(temp_path.c_str());  // not remove(), which would take an empty directory as well
  std::string text(file.text());
  if (!text.empty() && text.back() != '\n') text += '\n';
  return text;
}

}  // namespace

std::string_view address_fault(std::string_view url) {
  if (has_control_character(url)) return "the address holds a control character";
  return url.starts_with('-') ? "the address begins with \"-\"" : "";
}

std::string download_command(const Downloader& downloader, std::string_view temp_path,
                             std::string_view url) {
  std::string command(downloader.command);
  command += shell_word(temp_path);
  command += " \"";
  for (const char c : url) {
    if (downloader.escaped_in_url.find(c) != std::string_view::npos) command += '\\';
    command += c;
  }
  command += '"';
  return command;
}

std::string fetch_with_curl(const std::string& temp_path, const std::string& url) {
  return download(kCurl, temp_path, url);
}

std::string fetch_with_fetch(const std::string& temp_path, const std::string& url) {
  return download(kFetch, temp_path, url);
}

std::string fetch_with_wget(const std::string& temp_path, const std::string& url) {
  return download(kWget, temp_path, url);
}

}  // namespace toplist
