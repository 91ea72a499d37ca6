#include "net/raw_http.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <vector>

#include "util/text.h"
#include "util/unique_fd.h"

namespace toplist {
namespace {

constexpr std::size_t kReceiveBytes = 1024;
constexpr std::size_t kLookupBufferBytes = 1024;
constexpr const char* kTimeoutNote = "<font color=red>recv() timeout</font><br>";
constexpr const char* kTooLargeNote =
    "<font color=red>recv() in possible loop, aborting</font><br>";

void print_note(const char* note) {
  std::fputs(note, stdout);
  std::fflush(stdout);
}

bool set_blocking(int fd, bool blocking) {
  const int flags = ::fcntl(fd, F_GETFL);
  const int wanted = blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK;
  return flags >= 0 && ::fcntl(fd, F_SETFL, wanted) == 0;
}

/// Looks a name up; the reentrant form, as several threads do so at once.
std::optional<in_addr> look_up(const std::string& host) {
  std::vector<char> buffer(kLookupBufferBytes);
  hostent entry{};
  hostent* found = nullptr;
  int error = 0;
  while (::gethostbyname_r(host.c_str(), &entry, buffer.data(), buffer.size(), &found, &error) ==
         ERANGE) {
    buffer.resize(buffer.size() * 2);
  }
  in_addr address{};
  if (found == nullptr || found->h_length != static_cast<int>(sizeof address)) return std::nullopt;
  std::memcpy(&address, found->h_addr_list[0], sizeof address);
  return address;
}

std::optional<in_addr> resolve(const std::string& host) {
  const in_addr address{::inet_addr(host.c_str())};
  return address.s_addr == INADDR_NONE ? look_up(host) : address;
}

enum class Direction { readable, writable };

/// Waits until the socket is ready; false on a time-out or an error.
bool wait_for(int fd, Direction direction, int seconds) {
  timeval left{seconds, 0};  // the system counts it down across interruptions
  for (;;) {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(fd, &set);
    fd_set* const readable = direction == Direction::readable ? &set : nullptr;
    fd_set* const writable = direction == Direction::writable ? &set : nullptr;
    const int count = ::select(fd + 1, readable, writable, nullptr, &left);
    if (count >= 0 || errno != EINTR) return count > 0;
  }
}

bool connect_in_time(int fd, in_addr address, std::uint16_t port) {
  sockaddr_in target{};
  target.sin_family = AF_INET;
  target.sin_port = htons(port);
  target.sin_addr = address;
  if (::connect(fd, reinterpret_cast<const sockaddr*>(&target), sizeof target) == 0) return true;
  // An interrupted connect goes on in the background like one in progress.
  if (errno != EINPROGRESS && errno != EINTR) return false;
  if (!wait_for(fd, Direction::writable, kConnectTimeoutSeconds)) return false;
  int error = 0;
  socklen_t size = sizeof error;
  return ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

/// A connected socket in blocking mode, or none.
UniqueFd open_connection(const std::string& host, std::uint16_t port) {
  UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!fd || fd.get() >= FD_SETSIZE) return UniqueFd();
  if (!set_blocking(fd.get(), false)) return UniqueFd();
  const std::optional<in_addr> address = resolve(host);
  if (!address || !connect_in_time(fd.get(), *address, port)) return UniqueFd();
  if (!set_blocking(fd.get(), true)) return UniqueFd();
  return fd;
}

ssize_t receive_some(int fd, std::array<char, kReceiveBytes>& buffer) {
  for (;;) {
    const ssize_t count = ::recv(fd, buffer.data(), buffer.size(), 0);
    if (count >= 0 || errno != EINTR) return count;
  }
}

/// Receives to the end of the stream or up to the limit. An error ends it like the stream's end:
/// repeating the call would repeat the error.
std::string receive_response(int fd) {
  std::string response;
  std::array<char, kReceiveBytes> buffer{};
  while (response.size() < kReceiveLimitBytes) {
    const ssize_t count = receive_some(fd, buffer);
    if (count <= 0) break;
    response.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return response;
}

void send_request(int fd, std::string_view request) {
  // A page may name an address of megabytes, on a peer that never reads it.
  const timeval limit{kSendTimeoutSeconds, 0};
  ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  // The result is of no interest: without a response the wait for it ends the fetch. A peer that
  // has gone must not end the run by a signal.
  while (::send(fd, request.data(), request.size(), MSG_NOSIGNAL) < 0 && errno == EINTR) {
  }
}

}  // namespace

std::string raw_http_request(std::string_view host, std::string_view url) {
  const std::size_t at = url.find(host);
  if (at != std::string_view::npos) url.remove_prefix(at + host.size());
  std::string request = "GET ";
  if (!url.starts_with('/')) request += '/';
  request += url;
  // Bare line feeds up to the last line, and "www." in front of any host, be it an IP address: both
  // are meant. That is how the trades' servers know this client.
  request += " HTTP/1.0\nHost: www.";
  request += host;
  request +=
      "\nUser-Agent: Mozilla/5.0 (VantaCore Harvest)\n"
      "Keep-Alive: 300\n"
      "Connection: keep-alive\r\n\r\n";
  return request;
}

std::string fetch_raw_http(const std::string& host, const std::string& url) {
  return fetch_raw_http(host, url, kHttpPort);
}

std::string fetch_raw_http(const std::string& host, const std::string& url, std::uint16_t port) {
  if (has_control_character(url)) return kRawHttpFailure;  // it would split the request
  UniqueFd connection = open_connection(host, port);
  if (!connection) return kRawHttpFailure;

  send_request(connection.get(), raw_http_request(host, url));
  if (!wait_for(connection.get(), Direction::readable, kFirstByteTimeoutSeconds)) {
    print_note(kTimeoutNote);
    return kRawHttpFailure;
  }
  std::string response = receive_response(connection.get());
  if (response.size() > kResponseLimitBytes) {
    print_note(kTooLargeNote);
    // Left open on purpose: the sender of an endless response is held, not invited to start anew.
    connection.release();
    return kRawHttpFailure;
  }
  return response;
}

}  // namespace toplist
