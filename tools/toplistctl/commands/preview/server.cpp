#include "toplistctl/commands/preview/server.h"

#include <fmt/core.h>
#include <httplib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <mutex>
#include <semaphore>
#include <string_view>
#include <thread>
#include <utility>

#include "toplistctl/lib/new_site/new_site.h"
#include "toplistctl/lib/report/report.h"
#include "toplistctl/lib/site_files/public_file.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;
using httplib::Request;
using httplib::Response;

constexpr const char* kAddress = "127.0.0.1";
constexpr std::size_t kThreads = 32;
/// Browsers open connections in advance: no longer than this does one keep a thread.
constexpr std::time_t kIdleSeconds = 1;
constexpr std::time_t kTimeoutSeconds = 5;
constexpr std::size_t kMostBodyBytes = 4096;

constexpr const char* kHtml = "text/html";
constexpr std::pair<std::string_view, const char*> kTypes[] = {
    {".html", kHtml},
    {".htm", kHtml},
    {".css", "text/css"},
    {".js", "text/javascript"},
    {".mjs", "text/javascript"},
    {".json", "application/json"},
    {".txt", "text/plain"},
    {".xml", "application/xml"},
    {".svg", "image/svg+xml"},
    {".png", "image/png"},
    {".jpg", "image/jpeg"},
    {".jpeg", "image/jpeg"},
    {".gif", "image/gif"},
    {".webp", "image/webp"},
    {".avif", "image/avif"},
    {".ico", "image/x-icon"},
    {".woff", "font/woff"},
    {".woff2", "font/woff2"},
    {".ttf", "font/ttf"},
    {".otf", "font/otf"},
    {".mp4", "video/mp4"},
    {".webm", "video/webm"},
    {".pdf", "application/pdf"},
};

const char* type_of(const fs::path& path) {
  const std::string suffix = path.extension();
  const auto* const found =
      std::ranges::find(kTypes, suffix, &std::pair<std::string_view, const char*>::first);
  return found == std::end(kTypes) ? "application/octet-stream" : found->second;
}

constexpr const char* kShellPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; frame-src "
    "'self'; "
    "img-src data:; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
constexpr const char* kPagePolicy = "frame-ancestors 'self'";

/// Threads that serve connections. When all are busy and as many connections wait, the thread that
/// accepts waits, too.
class BoundedThreads final : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> task) override {
    room_.acquire();
    threads_.enqueue([this, task = std::move(task)] {
      task();
      room_.release();
    });
  }
  void shutdown() override { threads_.shutdown(); }

 private:
  std::counting_semaphore<> room_{2 * kThreads};
  httplib::ThreadPool threads_{kThreads};
};

void set_text(Response& response, int status, const std::string& text) {
  response.status = status;
  response.set_content(text + "\n", "text/plain; charset=utf-8");
}

/// What a browser wants the answer for, such as "document" or "iframe"; empty when it does not say.
std::string destination(const Request& request) {
  return request.get_header_value("Sec-Fetch-Dest");
}

}  // namespace

class PreviewServer::Server {
 public:
  explicit Server(Watch& files) : files_(files) {
    server_.new_task_queue = [] { return new BoundedThreads; };
    server_.set_keep_alive_max_count(1);
    server_.set_keep_alive_timeout(kIdleSeconds);
    server_.set_read_timeout(kTimeoutSeconds);
    server_.set_write_timeout(kTimeoutSeconds);
    server_.set_payload_max_length(kMostBodyBytes);
    // Not the library's own options, which let another process share the port.
    server_.set_socket_options([](int fd) {
      const int on = 1;
      ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    });
    server_.set_default_headers({{"Cache-Control", "no-store"},
                                 {"Vary", "Sec-Fetch-Dest"},
                                 {"X-Content-Type-Options", "nosniff"},
                                 {"Cross-Origin-Resource-Policy", "same-origin"}});
    // Instead of routes, whose patterns would be matched with all that anybody sends.
    server_.set_pre_routing_handler([this](const Request& request, Response& response) {
      answer(request, response);
      return httplib::Server::HandlerResponse::Handled;
    });
  }
  ~Server() { stop(); }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  Expected<std::uint16_t> listen(std::uint16_t port) {
    errno = 0;
    const int bound = port == 0                              ? server_.bind_to_any_port(kAddress)
                      : server_.bind_to_port(kAddress, port) ? port
                                                             : -1;
    if (bound <= 0) {
      const int error = errno;
      return tl::unexpected(Error{"cannot listen at", fmt::format("{}:{}", kAddress, port), error,
                                  "Choose another port with --port."});
    }
    for (const char* name : {"localhost", kAddress, "[::1]"}) {
      hosts_.push_back(fmt::format("{}:{}", name, bound));
      if (bound == 80) hosts_.emplace_back(name);
    }
    return static_cast<std::uint16_t>(bound);
  }

  void publish(std::shared_ptr<const Published> published) {
    const std::lock_guard lock(mutex_);
    published_ = std::move(published);
  }

  void start() {
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) std::this_thread::yield();
  }

  void stop() {
    if (!thread_.joinable()) return;
    server_.stop();
    thread_.join();
  }

 private:
  std::shared_ptr<const Published> published() {
    const std::lock_guard lock(mutex_);
    return published_;
  }

  [[nodiscard]] bool is_for_this_machine(const Request& request) const {
    return request.get_header_value_count("Host") == 1 &&
           std::ranges::count(hosts_, request.get_header_value("Host")) == 1;
  }

  void answer(const Request& request, Response& response) {
    if (!is_for_this_machine(request)) {
      return set_text(response, 403, "Forbidden. The preview is for browsers of this machine.");
    }
    if (request.method != "GET" && request.method != "HEAD") {
      return set_text(response, 405, "The preview only shows pages.");
    }
    const auto now = published();
    const std::string& path = request.path;
    if (path == "/" && destination(request) != "iframe") return show_shell(response);
    if (path == "/report") return show_report(request, response);
    if (path.starts_with(kOwnFolder) && answer_own(request, *now, response)) return;
    const std::string file = path.ends_with('/') ? path + "index.html" : path;
    if (file.starts_with('/') && show(file, request, *now, response)) return;
    set_text(response, 404, "There is no such file that a web server may show.");
  }

  /// The files of the bar, and what it polls. False when there is no such file.
  static bool answer_own(const Request& request, const Published& now, Response& response) {
    const std::string name = request.path.substr(kOwnFolder.size());
    if (name == "state") {
      response.status = 204;
      if (request.get_param_value("seen") == now.revision) return true;
      response.status = 200;
      response.set_content(now.state, "application/json");
    } else if (name == "bar.css" || name == "bar.js") {
      response.set_content(std::string(content("preview/" + name)), type_of(name));
    } else {
      return false;
    }
    return true;
  }

  /// The page with the bar, which shows the page of the address in a frame.
  static void show_shell(Response& response) {
    response.set_header("Content-Security-Policy", kShellPolicy);
    response.set_content(std::string(content("preview/shell.html")), "text/html; charset=utf-8");
  }

  /// The operator's report. It is no business of the pages, whose scripts may be a partner's: they
  /// can neither fetch it, frame it, nor read it in a window that they open.
  void show_report(const Request& request, Response& response) {
    const std::string dest = destination(request);
    if (!dest.empty() && dest != "document") {
      return set_text(response, 403, "Open the report in a window of its own.");
    }
    const std::lock_guard one_at_a_time(report_mutex_);
    const auto page = report_page({});
    if (!page) return set_text(response, 500, page.error().text());
    response.set_header("Cross-Origin-Opener-Policy", "same-origin");
    response.set_header("X-Frame-Options", "DENY");
    response.set_content(*page, "text/html; charset=utf-8");
  }

  /// A page, or a file of the site. False when there is none.
  bool show(const std::string& path, const Request& request, const Published& now,
            Response& response) {
    const auto page = now.snapshot.pages.find(path);
    const bool is_page = page != now.snapshot.pages.end();
    const fs::path file = path.substr(1);
    auto opened = is_page ? std::nullopt : open_public_file(file);
    if (!is_page && is_public(file)) files_.add(file);
    if (!is_page && !opened) return false;
    const char* const type = is_page ? kHtml : type_of(file);
    if (type == kHtml) {
      if (destination(request) == "document") {
        show_shell(response);
        return true;
      }
      response.set_header("Content-Security-Policy", kPagePolicy);
    }
    if (is_page) {
      response.set_content(page->second, type);
    } else {
      send_file(std::move(*opened), type, response);
    }
    return true;
  }

  static void send_file(PublicFile opened, const char* type, Response& response) {
    if (opened.size == 0) return response.set_content("", type);
    const auto file = std::make_shared<PublicFile>(std::move(opened));
    response.set_content_provider(
        file->size, type, [file](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
          std::array<char, 65536> bytes;
          const ssize_t count = ::pread(file->fd.get(), bytes.data(),
                                        std::min(length, bytes.size()), static_cast<off_t>(offset));
          return count > 0 && sink.write(bytes.data(), static_cast<std::size_t>(count));
        });
  }

  Watch& files_;
  std::vector<std::string> hosts_;  ///< as browsers name this server
  std::mutex report_mutex_;
  std::mutex mutex_;
  std::shared_ptr<const Published> published_;
  httplib::Server server_;
  std::thread thread_;
};

PreviewServer::PreviewServer(Watch& files) : server_(std::make_unique<Server>(files)) {}
PreviewServer::~PreviewServer() = default;
Expected<std::uint16_t> PreviewServer::listen(std::uint16_t port) { return server_->listen(port); }
void PreviewServer::publish(std::shared_ptr<const Published> published) {
  server_->publish(std::move(published));
}
void PreviewServer::start() { server_->start(); }
void PreviewServer::stop() { server_->stop(); }

}  // namespace toplist::ctl
