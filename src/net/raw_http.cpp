#include "net/raw_http.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>

#include "net/response_reader.h"
#include "util/text.h"
#include "util/uninterrupted.h"

namespace toplist {
namespace {

constexpr std::size_t kReceiveBytes = 1024;
constexpr std::size_t kLookupBufferBytes = 1024;

/// If nothing arrives for the idle time, probes are sent. After this many unanswered probes the
/// peer counts as gone: after a minute in all (contract: keepalive-probes).
constexpr int kIdleSeconds = 30;
constexpr int kProbeSeconds = 10;
constexpr int kProbes = 3;

struct FailureTexts {
  std::string_view reason;
  const char* note;  ///< what a harvest prints on standard output
};
/// In the order of FetchFailure.
constexpr std::array<FailureTexts, 6> kFailureTexts{{
    {"the address holds a control character", ""},
    {"no socket is left", ""},
    {"the host is not known", ""},
    {"the connection was refused or took above 2 s", ""},
    {"no answer began within 2 s", "<font color=red>recv() timeout</font><br>"},
    {"the answer is above 10 MiB", "<font color=red>recv() in possible loop, aborting</font><br>"},
}};

const FailureTexts& texts_of(FetchFailure failure) {
  return kFailureTexts.at(static_cast<std::size_t>(failure));
}

void print_note(FetchFailure failure) {
  std::fputs(texts_of(failure).note, stdout);
  std::fflush(stdout);
}

bool set_blocking(int fd, bool blocking) {
  const int flags = ::fcntl(fd, F_GETFL);
  const int wanted = blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK;
  return flags >= 0 && ::fcntl(fd, F_SETFL, wanted) == 0;
}

/// Looks a name up. It is the reentrant form because several threads do so at once.
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

/// Waits until the socket is ready for `events`; false on a time-out or an error.
bool wait_for(int fd, short events, int seconds) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::seconds(seconds);
  pollfd polled{fd, events, 0};
  return uninterrupted([&] {
           const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
           return ::poll(&polled, 1, std::max(0, static_cast<int>(left.count())));
         }) > 0;
}

bool connect_in_time(int fd, in_addr address, std::uint16_t port) {
  sockaddr_in target{};
  target.sin_family = AF_INET;
  target.sin_port = htons(port);
  target.sin_addr = address;
  if (::connect(fd, reinterpret_cast<const sockaddr*>(&target), sizeof target) == 0) return true;
  // An interrupted connect goes on in the background like one in progress.
  if (errno != EINPROGRESS && errno != EINTR) return false;
  if (!wait_for(fd, POLLOUT, kConnectTimeoutSeconds)) return false;
  int error = 0;
  socklen_t size = sizeof error;
  return ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

void watch_for_a_gone_peer(int fd) {
  const auto set = [fd](int level, int option, int value) {
    ::setsockopt(fd, level, option, &value, sizeof value);
  };
  set(SOL_SOCKET, SO_KEEPALIVE, 1);
  set(IPPROTO_TCP, TCP_KEEPIDLE, kIdleSeconds);
  set(IPPROTO_TCP, TCP_KEEPINTVL, kProbeSeconds);
  set(IPPROTO_TCP, TCP_KEEPCNT, kProbes);
}

/// Connects `fd`, a new socket, and leaves it in blocking mode. Returns why not, if it cannot.
std::optional<FetchFailure> open_connection(int fd, const std::string& host, std::uint16_t port) {
  if (fd < 0 || !set_blocking(fd, false)) return FetchFailure::no_socket;
  const std::optional<in_addr> address = resolve(host);
  if (!address) return FetchFailure::unknown_host;
  if (!connect_in_time(fd, *address, port) || !set_blocking(fd, true))
    return FetchFailure::no_connection;
  watch_for_a_gone_peer(fd);
  return std::nullopt;
}

/// Receives to the end of the stream or up to the limit. An error ends it like the stream's end:
/// repeating the call would repeat the error.
///
/// The request asks for the connection to be kept, and a server that does so would be waited for
/// until it gives up. So once the response is complete by its own announcement the server is told
/// that no further request comes, at which it closes (contract: half-close). What it sends beyond
/// is still read.
std::string receive_response(int fd) {
  ResponseReader response;
  std::array<char, kReceiveBytes> buffer{};
  bool done_sending = false;
  while (response.size() < kReceiveLimitBytes) {
    const ssize_t count =
        uninterrupted([&] { return ::recv(fd, buffer.data(), buffer.size(), 0); });
    if (count <= 0) break;
    response.append({buffer.data(), static_cast<std::size_t>(count)});
    if (done_sending || !response.is_complete()) continue;
    ::shutdown(fd, SHUT_WR);
    done_sending = true;
  }
  return response.take();
}

void send_request(int fd, std::string_view request) {
  // A page may name an address of several megabytes on a server that never reads the request.
  const timeval limit{kSendTimeoutSeconds, 0};
  ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  // The result does not matter: without a response, the wait for it times out. A peer that has gone
  // must not end the run with a signal.
  uninterrupted([&] { return ::send(fd, request.data(), request.size(), MSG_NOSIGNAL); });
}

}  // namespace

std::string_view failure_text(FetchFailure failure) { return texts_of(failure).reason; }

std::string raw_http_request(std::string_view host, std::string_view url) {
  const std::size_t at = url.find(host);
  if (at != std::string_view::npos) url.remove_prefix(at + host.size());
  std::string request = "GET ";
  if (!url.starts_with('/')) request += '/';
  request += url;
  // Bare line feeds up to the last line, and "www." before any host, even an IP address, are on
  // purpose: the trades' servers know this client by them (contract: bare-line-feeds).
  request += " HTTP/1.0\nHost: www.";
  request += host;
  request +=
      "\nUser-Agent: Mozilla/5.0 (VantaCore Harvest)\n"
      "Keep-Alive: 300\n"
      "Connection: keep-alive\r\n\r\n";
  return request;
}

RawResponse get_raw_http(const std::string& host, const std::string& url, Connections& held_open,
                         std::uint16_t port) {
  // It would split the request (contract: control-characters).
  if (has_control_character(url)) return {.failure = FetchFailure::refused_address};
  UniqueFd connection(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const int fd = connection.get();
  if (const auto failure = open_connection(fd, host, port)) return {.failure = failure};

  send_request(fd, raw_http_request(host, url));
  if (!wait_for(fd, POLLIN, kFirstByteTimeoutSeconds))
    return {.failure = FetchFailure::no_first_byte};
  RawResponse response{.bytes = receive_response(fd)};
  if (response.bytes.size() <= kResponseLimitBytes) return response;
  // The connection stays open, so that the sender of an endless response cannot start again
  // (contract: open-socket).
  held_open.push_back(std::move(connection));
  return {.failure = FetchFailure::too_large};
}

std::string fetch_raw_http(const std::string& host, const std::string& url, Connections& held_open,
                           std::uint16_t port) {
  RawResponse response = get_raw_http(host, url, held_open, port);
  if (response.failure) print_note(*response.failure);
  return std::move(response).text();
}

}  // namespace toplist
