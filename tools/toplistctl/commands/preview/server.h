#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "toplistctl/commands/preview/page_maker.h"
#include "toplistctl/commands/preview/watch.h"
#include "toplistctl/lib/diagnostics/error.h"

namespace toplist::ctl {

/// What the server shows: it never changes once it is published.
struct Published {
  Snapshot snapshot;
  std::string revision;  ///< differs for every snapshot, also of another process
  std::string state;     ///< the JSON text that the bar polls
};

/// Shows the pages and the public files of the site in the working directory to the browsers of
/// this machine. Answers only requests that name a loopback host, so that no other web site can
/// make a browser read the pages for it.
///
/// A fixed number of threads serve one request of a connection each. Connections beyond a fixed
/// number wait in the system's queue.
class PreviewServer {
 public:
  /// Files that are served, or asked for and missing, are added to `files`.
  explicit PreviewServer(Watch& files);
  ~PreviewServer();

  /// Listens at 127.0.0.1. Port 0 stands for a free one. Returns the port.
  Expected<std::uint16_t> listen(std::uint16_t port);

  void publish(std::shared_ptr<const Published> published);

  /// Serves on its own threads until stop() or the end of this object. Signals must be blocked.
  void start();
  void stop();

 private:
  class Server;
  std::unique_ptr<Server> server_;
};

}  // namespace toplist::ctl
