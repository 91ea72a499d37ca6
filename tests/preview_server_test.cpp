// toplistctl preview, asked over a socket as a browser would.

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/site.h"
#include "util/text.h"
#include "util/unique_fd.h"

namespace toplist::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
constexpr auto kPatience = 20s;

/// All that comes up to the end of the stream.
std::string read_all(int fd) {
  std::string text;
  std::array<char, 4096> bytes;
  for (ssize_t count; (count = ::read(fd, bytes.data(), bytes.size())) > 0;) {
    text.append(bytes.data(), static_cast<std::size_t>(count));
  }
  return text;
}

/// The preview of a site on a free port, ended with this object.
class Preview {
 public:
  explicit Preview(const Site& site) {
    int ends[2];
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const UniqueFd output(ends[0]);
    child_ = ::fork();
    if (child_ == 0) {
      ::dup2(ends[1], STDOUT_FILENO);
      ::execl(TOPLISTCTL_PROGRAM, "toplistctl", "preview", "--port", "0", "--site",
              site.path("").c_str(), nullptr);
      ::_exit(127);
    }
    ::close(ends[1]);
    std::string url;
    for (char byte; !url.ends_with('\n') && ::read(output.get(), &byte, 1) == 1;) url += byte;
    port_ = url.size() < 10 ? "" : url.substr(url.rfind(':') + 1, url.size() - url.rfind(':') - 3);
    EXPECT_EQ(url, "http://127.0.0.1:" + port_ + "/\n");
  }
  ~Preview() {
    if (child_ > 0) (void)end(SIGKILL);
  }
  Preview(const Preview&) = delete;
  Preview& operator=(const Preview&) = delete;

  [[nodiscard]] const std::string& port() const { return port_; }

  /// The response to these lines of a request.
  [[nodiscard]] std::string send(const std::string& lines) const {
    const UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(std::atoi(port_.c_str())));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) return "";
    const std::string request = lines + "\r\n\r\n";
    (void)!::send(fd.get(), request.data(), request.size(), MSG_NOSIGNAL);
    return read_all(fd.get());
  }

  [[nodiscard]] std::string get(const std::string& path, const std::string& header = "") const {
    return send("GET " + path + " HTTP/1.1\r\nHost: localhost:" + port_ + header);
  }

  /// What comes of a GET: the status, a blank and the body.
  [[nodiscard]] std::string body(const std::string& path) const {
    const std::string response = get(path);
    return response.size() < 12
               ? "none"
               : response.substr(9, 4) + response.substr(response.find("\r\n\r\n") + 4);
  }

  /// The state after `seen`, once it holds the text; empty when it never does.
  [[nodiscard]] std::string await_state(const std::string& text) const {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (std::chrono::steady_clock::now() < end) {
      std::string state = body("/.preview/state");
      if (contains(state, text)) return state;
    }
    return "";
  }

  /// Waits until the design's number is another one, as the bar does before it reloads the page.
  [[nodiscard]] bool reloads_after(const std::string& before) const {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (std::chrono::steady_clock::now() < end) {
      if (design() != before) return true;
    }
    return false;
  }
  [[nodiscard]] std::string design() const {
    const std::string state = body("/.preview/state");
    const auto place = state.find("\"design\"");
    return place == std::string::npos ? state : state.substr(place);
  }

  /// The exit status after a signal.
  [[nodiscard]] int end(int signal) {
    int status = 0;
    ::kill(child_, signal);
    ::waitpid(std::exchange(child_, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  pid_t child_ = -1;
  std::string port_;
};

/// A site with a page from a source, one from a template, and what a web server may not show.
struct PreviewedSite : Site {
  PreviewedSite() {
    add_toplist("plain", "<p>%%tid_000%% %%rin60_011%%\n", "16");
    add_toplist("top", "<b>old\n");
    write("d/tl/top.tpl.src", "<!-- include part -->\n<b>%%dom_000%%\n");
    write("d/tl/part", "<i>one\n");
    write("style.css", "b {}\n");
    write(".secret", "no\n");
    write("d/tl/style.css", "no\n");
    write("l/sys/page.html", "no\n");
    fs::create_symlink("style.css", path("inside.css"));
    fs::create_symlink("/etc/hostname", path("outside.css"));
    fs::create_symlink("d/t/index", path("private.css"));
    fs::create_symlink("d/tl", path("folder"));
  }
};

TEST(PreviewServer, ShowsTheNextRunsPagesAndPublicFilesOnly) {
  const PreviewedSite site;
  const auto before = site.contents();
  Preview preview(site);
  const struct {
    const char* path;
    const char* answer;  ///< the status and the body
  } kCases[] = {
      {"/top.html", "200 <i>one\n<b>t01.example\n"},
      {"/style.css", "200 b {}\n"},
      {"/inside.css?version=2", "200 b {}\n"},
  };
  for (const auto& [path, answer] : kCases) EXPECT_EQ(preview.body(path), answer) << path;
  for (const char* path :
       {"/.secret", "/d/t/index", "/d/tl/style.css", "/x/../d/t/index", "/d", "/l/sys/page.html",
        "/%2e%2e/etc/hostname", "/%64/t/index", "//etc/hostname", "/outside.css", "/private.css",
        "/folder/style.css", "/l", "/nothing.css", "/style.css%00.png", "/.preview/other"}) {
    EXPECT_EQ(preview.body(path).substr(0, 4), "404 ") << path;
  }
  // The bar comes with what a person opens, the page alone with what the bar's frame asks for.
  for (const auto& [path, dest, has_bar] :
       std::vector<std::tuple<const char*, const char*, bool>>{{"/", "", true},
                                                               {"/plain.html", "document", true},
                                                               {"/plain.html", "iframe", false},
                                                               {"/style.css", "document", false}}) {
    const std::string header = std::string("\r\nSec-Fetch-Dest: ") + dest;
    EXPECT_EQ(contains(preview.get(path, header), "/.preview/bar.js"), has_bar) << path << dest;
  }
  EXPECT_TRUE(contains(preview.get("/report", "\r\nSec-Fetch-Dest: document"), "t12.example"));
  EXPECT_TRUE(preview.get("/report", "\r\nSec-Fetch-Dest: empty").starts_with("HTTP/1.1 403"));
  const std::string plain = preview.body("/plain.html");
  EXPECT_EQ(preview.end(SIGINT), 0);
  EXPECT_EQ(site.contents(), before);
  EXPECT_EQ(site.run(), RunResult{});
  EXPECT_EQ(plain, "200 " + site.read("plain.html"));
}

TEST(PreviewServer, AnswersOnlyLoopbackHosts) {
  const PreviewedSite site;
  Preview preview(site);
  const std::string& port = preview.port();
  const struct {
    std::string lines;
    const char* status;
  } kCases[] = {
      {"GET /top.html HTTP/1.1\r\nHost: 127.0.0.1:" + port, "200"},
      {"GET /top.html HTTP/1.1\r\nHost: [::1]:" + port, "200"},
      {"GET /top.html HTTP/1.1\r\nHost: localhost", "403"},
      {"GET /top.html HTTP/1.1\r\nHost: list.example:" + port, "403"},
      {"GET /top.html HTTP/1.1\r\nHost: localhost:" + port + "\r\nHost: list.example", "403"},
      {"GET /.preview/state HTTP/1.1\r\nHost: list.example:" + port, "403"},
      {"GET /top.html HTTP/1.0", "403"},
      {"POST /top.html HTTP/1.1\r\nContent-Length: 0\r\nHost: localhost:" + port, "405"},
  };
  for (const auto& [lines, status] : kCases) {
    const std::string response = preview.send(lines);
    EXPECT_EQ(response.size() < 12 ? response : response.substr(9, 3), status) << lines;
  }
  EXPECT_EQ(site.start({.program = TOPLISTCTL_PROGRAM, .arguments = {"preview", "--port", port}}),
            (RunResult{.status = 2,
                       .err = "toplistctl: cannot listen at 127.0.0.1:" + port +
                              ": Address already in use. Choose another port with --port.\n"}));
  EXPECT_EQ(preview.end(SIGTERM), 0);
}

TEST(PreviewServer, ReloadsAfterAChangeAndReportsErrors) {
  const PreviewedSite site;
  const Preview preview(site);
  ASSERT_EQ(preview.body("/style.css"), "200 b {}\n");  // now it is watched
  const struct {
    const char* file;
    const char* text;
    const char* page;  ///< what /top.html holds after that
    const char* state;
  } kChanges[] = {
      {"d/tl/top.tpl.src", "<!-- include part -->\n<u>%%dom_001%%\n",
       "200 <i>one\n<u>t02.example\n", "toplistctl expand --install --site"},
      {"d/tl/part", "<i>two\n", "200 <i>two\n<u>t02.example\n", "\"errors\": []"},
      {"d/tl/tl.ext", "|top.tpl|rin60=99999999|", "200 <i>two\n<u> \n", "\"passing\": 0"},
      {"style.css", "b { color: red }\n", "200 <i>two\n<u> \n", "\"errors\": []"},
      {"d/tl/part", "<i>three\n<i>%%\n", "200 <i>two\n<u> \n",
       R"("file": "d/tl/part",
          "line": 2,
          "column": 4,)"},
      {"d/tl/part", "<i>four\n", "200 <i>four\n<u> \n", "\"errors\": []"},
      {"d/tl/top.tpl.src", "\n  <!-- include gone -->\n", "200 <i>four\n<u> \n",
       R"("file": "d/tl/top.tpl.src",
          "line": 2,)"},
      {"d/tl/gone", "<i>here\n", "200 \n<i>here\n", "\"errors\": []"},
      {"d/tl/plain.tpl", "%%\n", "200 \n<i>here\n", R"("file": "d/tl/plain.tpl")"},
      {"d/tl/tl", "", "404 There is no such file that a web server may show.\n",
       R"("problem": "d/tl/tl defines no toplist")"},
  };
  for (const auto& [file, text, page, state] : kChanges) {
    const std::string before = preview.design();
    site.write("new", text);
    fs::rename(site.path("new"), site.path(file));  // no half of it is seen
    EXPECT_TRUE(preview.reloads_after(before)) << file;
    EXPECT_NE(preview.await_state(state), "") << state << preview.body("/.preview/state");
    EXPECT_EQ(preview.body("/top.html"), page) << text;
  }
  // Figures are shown in the bar, and by the next reload.
  const std::string design = preview.design();
  site.remove("d/t/sum");
  EXPECT_NE(preview.await_state("cannot open d/t/sum"), "");
}

}  // namespace
}  // namespace toplist::test
