#include "support/loopback_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <string_view>
#include <system_error>
#include <utility>

namespace toplist::test {
namespace {

constexpr std::uint16_t kStandardPort = 80;
constexpr int kPatienceMilliseconds = 5000;
constexpr int kTricklePauseMilliseconds = 30;
constexpr int kKeepPauseMilliseconds = 50;
constexpr int kBacklog = 64;

void check(int result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
}

void reset_on_close(int fd) {
  const linger now{1, 0};
  ::setsockopt(fd, SOL_SOCKET, SO_LINGER, &now, sizeof now);
}

/// The path of "GET <path> HTTP/1.0".
std::string path_of(const std::string& request) {
  const std::size_t from = request.find(' ');
  if (from == std::string::npos) return "";
  return request.substr(from + 1, request.find(' ', from + 1) - from - 1);
}

}  // namespace

std::vector<std::string> loopback_addresses(std::size_t count) {
  // Tests run side by side; only the whole 127.0.0.0/8 has room for all of them at one port.
  const int id = ::getpid();
  const std::string prefix =
      "127." + std::to_string(1 + (id >> 8) % 250) + "." + std::to_string(id & 0xff) + ".";
  std::vector<std::string> addresses(count);
  for (std::size_t n = 0; n < count; ++n) addresses[n] = prefix + std::to_string(n + 2);
  return addresses;
}

UniqueFd bind_socket(const std::string& address, std::uint16_t& port) {
  UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  check(fd.get(), "socket");
  const int on = 1;
  ::setsockopt(fd.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in name{};
  name.sin_family = AF_INET;
  name.sin_port = htons(port);
  ::inet_pton(AF_INET, address.c_str(), &name.sin_addr);
  auto* const generic = reinterpret_cast<sockaddr*>(&name);
  check(::bind(fd.get(), generic, sizeof name), "bind");
  socklen_t size = sizeof name;
  check(::getsockname(fd.get(), generic, &size), "getsockname");
  port = ntohs(name.sin_port);
  return fd;
}

LoopbackServer::LoopbackServer(const std::vector<std::string>& addresses, std::uint16_t port,
                               Handler handler)
    : handler_(std::move(handler)), stop_(::eventfd(0, EFD_CLOEXEC)) {
  check(stop_.get(), "eventfd");
  for (const std::string& address : addresses) listen_at(address, port);
  thread_ = std::thread(&LoopbackServer::serve, this);
}

LoopbackServer::~LoopbackServer() {
  ::eventfd_write(stop_.get(), 1);
  thread_.join();
}

void LoopbackServer::listen_at(const std::string& address, std::uint16_t port) {
  UniqueFd listener = bind_socket(address, port);
  check(::listen(listener.get(), kBacklog), "listen");
  const std::string suffix = port == kStandardPort ? "" : ":" + std::to_string(port);
  points_.push_back({std::move(listener), address, port, address + suffix});
}

std::vector<Request> LoopbackServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void LoopbackServer::serve() {
  std::vector<pollfd> polled;
  polled.reserve(points_.size() + 1);
  for (const Point& point : points_) polled.push_back({point.listener.get(), POLLIN, 0});
  polled.push_back({stop_.get(), POLLIN, 0});
  while (::poll(polled.data(), polled.size(), -1) >= 0 || errno == EINTR) {
    if (polled.back().revents != 0) return;
    for (std::size_t n = 0; n < points_.size(); ++n) {
      if (polled[n].revents != 0) serve_connection(points_[n]);
    }
  }
}

void LoopbackServer::serve_connection(const Point& point) {
  UniqueFd fd(::accept4(point.listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (!fd) return;
  Request request{.url = "http://" + point.host, .text = read_request(fd.get())};
  request.url += path_of(request.text);
  const Answer answer = handler_(request.url);
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back(std::move(request));
  }
  if (answer.how == Answer::How::silence) return held_.push_back(std::move(fd));
  if (answer.how == Answer::How::trickle) return trickle(fd.get(), answer.bytes);
  if (answer.how == Answer::How::keep) {
    const Request::Ended ended = keep(fd.get(), answer.bytes);
    {
      const std::lock_guard lock(mutex_);
      requests_.back().ended = ended;
    }
    return send_all(fd.get(), answer.beyond);
  }
  send_all(fd.get(), answer.bytes);
  if (answer.how == Answer::How::reset) reset_on_close(fd.get());
}

/// Waits for a socket, also across signals; false when it is not ready in time or the server is to
/// end.
bool LoopbackServer::ready(int fd, short events, int milliseconds) const {
  std::array<pollfd, 2> polled{{{fd, events, 0}, {stop_.get(), POLLIN, 0}}};
  const int count = ::poll(polled.data(), polled.size(), milliseconds);
  if (count < 0 && errno == EINTR) return ready(fd, events, milliseconds);
  return count > 0 && polled[1].revents == 0;
}

std::string LoopbackServer::read_request(int fd) const {
  std::string text;
  std::array<char, 1024> buffer{};
  while (text.find("\r\n\r\n") == std::string::npos && ready(fd, POLLIN, kPatienceMilliseconds)) {
    const ssize_t count = ::recv(fd, buffer.data(), buffer.size(), 0);
    if (count <= 0) break;
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return text;
}

void LoopbackServer::send_all(int fd, const std::string& bytes) const {
  std::string_view rest = bytes;
  while (!rest.empty() && ready(fd, POLLOUT, kPatienceMilliseconds)) {
    const ssize_t count = ::send(fd, rest.data(), rest.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count < 0) return;
    rest.remove_prefix(static_cast<std::size_t>(count));
  }
}

void LoopbackServer::trickle(int fd, const std::string& bytes) const {
  for (const char byte : bytes) {
    std::this_thread::sleep_for(std::chrono::milliseconds(kTricklePauseMilliseconds));
    send_all(fd, std::string(1, byte));
  }
}

/// The peer has sent its request, so that it is ready to be read means that it has ended its side.
Request::Ended LoopbackServer::keep(int fd, const std::string& bytes) const {
  send_all(fd, bytes.substr(0, bytes.size() - 1));
  if (ready(fd, POLLIN, kKeepPauseMilliseconds)) return Request::Ended::early;
  send_all(fd, bytes.substr(bytes.size() - 1));
  return ready(fd, POLLIN, kPatienceMilliseconds) ? Request::Ended::complete
                                                  : Request::Ended::never;
}

}  // namespace toplist::test
