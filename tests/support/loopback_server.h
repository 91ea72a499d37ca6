#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "util/unique_fd.h"

namespace toplist::test {

/// What a server does with a request.
struct Answer {
  enum class How {
    send,     ///< all bytes, then the end of the stream
    trickle,  ///< the bytes one by one with pauses, also in front of the first
    reset,    ///< the bytes, then a reset instead of the end of the stream
    silence,  ///< nothing; the connection stays open as long as the server
    keep,     ///< the bytes, the last one after a pause; then waits for the peer to end its side
  };
  How how = How::send;
  std::string bytes = {};
  std::string beyond = {};  ///< after `keep`, what is sent once the peer has ended its side
};

/// A request as it came, and the address it is for: "http://", the server's host and the path.
struct Request {
  std::string url;
  std::string text;
  /// When the peer of a connection that is kept ended its side: in the pause, behind the last byte,
  /// or not for some seconds.
  enum class Ended { early, complete, never } ended = Ended::never;
};

/// An HTTP server on loopback addresses, which serves one connection after the other on its own
/// thread. It waits for no peer longer than some seconds, and for none once it
/// is being destroyed; the destructor joins the thread and closes every connection.
class LoopbackServer {
 public:
  /// Called on the server's thread for every request.
  using Handler = std::function<Answer(const std::string& url)>;

  /// Listens at the addresses, on `port` or, with 0, on a free one each. Throws std::system_error
  /// when that is not possible.
  LoopbackServer(const std::vector<std::string>& addresses, std::uint16_t port, Handler handler);
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  /// Dotted address and port of the n-th address, and both as an address (an url) names them.
  [[nodiscard]] const std::string& address(std::size_t n = 0) const { return points_[n].address; }
  [[nodiscard]] std::uint16_t port(std::size_t n = 0) const { return points_[n].port; }
  [[nodiscard]] const std::string& host(std::size_t n = 0) const { return points_[n].host; }

  /// The requests so far.
  [[nodiscard]] std::vector<Request> requests() const;

 private:
  struct Point {
    UniqueFd listener;
    std::string address;
    std::uint16_t port;
    std::string host;  ///< without the port when it is that of HTTP
  };

  void listen_at(const std::string& address, std::uint16_t port);
  void serve();
  void serve_connection(const Point& point);
  [[nodiscard]] bool ready(int fd, short events, int milliseconds) const;
  [[nodiscard]] std::string read_request(int fd) const;
  void send_all(int fd, const std::string& bytes) const;
  void trickle(int fd, const std::string& bytes) const;
  [[nodiscard]] Request::Ended keep(int fd, const std::string& bytes) const;

  Handler handler_;
  std::vector<Point> points_;
  std::vector<UniqueFd> held_;  ///< silent connections
  UniqueFd stop_;               ///< readable once the server is to end
  mutable std::mutex mutex_;
  std::vector<Request> requests_;
  std::thread thread_;
};

/// Loopback addresses that no other process uses; 200 at the most.
std::vector<std::string> loopback_addresses(std::size_t count);

/// A socket bound to a port of a loopback address; `port` 0 becomes a free one. As long as it does
/// not listen, connections are refused. Throws std::system_error.
UniqueFd bind_socket(const std::string& address, std::uint16_t& port);

}  // namespace toplist::test
