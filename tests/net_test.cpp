#include <fcntl.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "net/downloader.h"
#include "net/raw_http.h"
#include "net/response_reader.h"
#include "support/loopback_server.h"
#include "support/temp_dir.h"
#include "support/text_cases.h"
#include "util/shell.h"

namespace toplist {
namespace {

using test::Answer;
using test::LoopbackServer;
using How = Answer::How;

constexpr const char* kTimeoutNote = "<font color=red>recv() timeout</font><br>";
constexpr const char* kTooLargeNote =
    "<font color=red>recv() in possible loop, aborting</font><br>";

struct Fetched {
  std::string response;
  std::string out = {};  ///< what went to standard output

  bool operator==(const Fetched&) const = default;
};

const Fetched kFailure{"-1"};

std::string fetch_text(const std::string& host, const std::string& url, std::uint16_t port) {
  Connections held_open;
  return fetch_raw_http(host, url, held_open, port);
}

Fetched fetch(const std::string& host, const std::string& url, std::uint16_t port) {
  testing::internal::CaptureStdout();
  std::string response = fetch_text(host, url, port);
  return {std::move(response), testing::internal::GetCapturedStdout()};
}

std::unique_ptr<LoopbackServer> serve(LoopbackServer::Handler handler) {
  return std::make_unique<LoopbackServer>(test::loopback_addresses(1), std::uint16_t{0},
                                          std::move(handler));
}

std::unique_ptr<LoopbackServer> serve(Answer answer) {
  return serve([answer = std::move(answer)](const std::string&) { return answer; });
}

Fetched fetch_from(const LoopbackServer& server, const std::string& path = "/") {
  return fetch(server.address(), "http://" + server.address() + path, server.port());
}

std::set<int> open_descriptors() {
  std::set<int> open;
  for (int fd = 0; fd < 2 * FD_SETSIZE; ++fd) {
    if (::fcntl(fd, F_GETFD) >= 0) open.insert(fd);
  }
  return open;
}

TEST(RawHttp, RequestsAreBuiltByteForByte) {
  const struct {
    const char *host, *url, *path;
  } cases[] = {
      {"h.example", "http://h.example", "/"},
      {"h.example", "http://www.h.example/a/b.html?c=d#e", "/a/b.html?c=d#e"},
      {"h.example", "h.example?q", "/?q"},
      {"a", "http://a.example/a", "/.example/a"},  // only the first occurrence counts
      {"t", "http://t/", "/tp://t/"},              // wherever it is
      {"h.example:8080", "http://h.example:8080/x y", "/x y"},
  };
  for (const auto& c : cases) {
    const std::string expected = std::string("GET ") + c.path + " HTTP/1.0\nHost: www." + c.host +
                                 "\nUser-Agent: Mozilla/5.0 (VantaCore Harvest)\n"
                                 "Keep-Alive: 300\nConnection: keep-alive\r\n\r\n";
    EXPECT_EQ(raw_http_request(c.host, c.url), expected) << c.url;
  }
}

TEST(RawHttp, SendsTheWholeRequestAndReturnsTheWholeResponse) {
  const std::string bytes("HTTP/1.0 200 OK\r\nA: b\r\n\r\nbody\0\xff\r\n\r\nend", 38);
  const auto server = serve({How::send, bytes});
  for (const std::string& path : {std::string("/page"), "/" + std::string(3000, 'x')}) {
    EXPECT_EQ(fetch_from(*server, path), Fetched{bytes});
    EXPECT_EQ(server->requests().back().text,
              raw_http_request(server->address(), "http://" + server->address() + path));
  }
}

/// Too long a name to be asked for, so the look-up fails without any name server.
const std::string kUnknownHost = std::string(70, 'x') + ".invalid";

TEST(RawHttp, LooksNamesUp) {
  addrinfo* found = nullptr;
  if (::getaddrinfo("localhost", nullptr, nullptr, &found) != 0)
    GTEST_SKIP() << "no localhost here";
  ::freeaddrinfo(found);
  const LoopbackServer server({"127.0.0.1"}, 0, [](const std::string&) {
    return Answer{How::send, "found"};
  });
  EXPECT_EQ(fetch("localhost", "http://localhost/", server.port()).response, "found");
}

TEST(RawHttp, FailuresLeaveNoSocketOpenAndNoNote) {
  const std::set<int> before = open_descriptors();
  {
    std::uint16_t port = 0;
    const std::string host = test::loopback_addresses(1)[0];
    const UniqueFd unheard = test::bind_socket(host, port);
    const auto server = serve({How::silence});
    const struct {
      std::string host;
      std::uint16_t port;
      const char* url_end;
      const char* failure;
      bool waits = false;
    } cases[] = {
        {host, port, "", "the connection was refused or took above 2 s"},
        {kUnknownHost, port, "", "the host is not known"},
        {host, port, "/\n", "the address holds a control character"},
        {server->address(), server->port(), "", "no answer began within 2 s", true},
    };
    for (const auto& c : cases) {
      const std::string url = "http://" + c.host + c.url_end;
      Connections held_open;
      const auto start = std::chrono::steady_clock::now();
      const auto failure = get_raw_http(c.host, url, held_open, c.port).failure;
      ASSERT_TRUE(failure) << c.failure;
      EXPECT_EQ(failure_text(*failure), c.failure);
      const auto lasted = std::chrono::steady_clock::now() - start;
      if (c.waits) {
        EXPECT_GE(lasted, std::chrono::milliseconds(1900));
      } else {
        EXPECT_EQ(fetch(c.host, url, c.port), kFailure) << c.failure;
      }
    }
  }
  EXPECT_EQ(open_descriptors(), before);

  rlimit limits{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limits), 0);
  const rlim_t former = std::exchange(limits.rlim_cur, 0);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limits), 0);
  Connections held_open;
  const auto failure = get_raw_http("127.0.0.1", "http://127.0.0.1/", held_open, 1).failure;
  limits.rlim_cur = former;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limits), 0);
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure_text(*failure), "no socket is left");
}

TEST(RawHttp, ARequestThatNobodyReadsTimesOut) {
  std::uint16_t port = 0;
  const std::string host = test::loopback_addresses(1)[0];
  const UniqueFd unread = test::bind_socket(host, port);
  ASSERT_EQ(::listen(unread.get(), 1), 0);
  // As long as a page may make it, and longer than what the system keeps for a peer.
  const std::string url = "http://" + host + "/" + std::string(9U << 20U, '1');
  EXPECT_EQ(fetch(host, url, port), (Fetched{"-1", kTimeoutNote}));
}

TEST(RawHttp, ConnectionsThatAreNotTakenUpTimeOutAndPrintNothing) {
  std::uint16_t port = 0;
  const std::string host = test::loopback_addresses(1)[0];
  const UniqueFd full = test::bind_socket(host, port);
  ASSERT_EQ(::listen(full.get(), 0), 0);
  const std::string url = "http://" + host + "/";
  // The first one fills the queue: it is connected, and gets no answer.
  std::thread first([&] { fetch_text(host, url, port); });
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  testing::internal::CaptureStdout();
  EXPECT_EQ(fetch_text(host, url, port), "-1");
  first.join();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), kTimeoutNote);  // the first one's alone
}

TEST(RawHttp, AResetEndsTheResponseLikeItsEnd) {
  for (const char* bytes : {"", "HTTP/1.0 200 OK\r\n\r\npart"}) {
    const auto server = serve({How::reset, bytes});
    const Fetched fetched = fetch_from(*server);
    EXPECT_EQ(std::string(bytes).find(fetched.response), 0U);
    EXPECT_EQ(fetched.out, "");
  }
}

TEST(RawHttp, SlowResponsesArriveWholeAcrossInterruptions) {
  const auto server = serve({How::trickle, "slowly but whole"});
  struct sigaction action {
  }, former{};
  action.sa_handler = [](int) {};  // without SA_RESTART: calls are cut short
  ::sigaction(SIGALRM, &action, &former);
  const itimerval every_5_ms{{0, 5000}, {0, 5000}}, never{};
  ::setitimer(ITIMER_REAL, &every_5_ms, nullptr);
  EXPECT_EQ(fetch_from(*server).response, "slowly but whole");
  ::setitimer(ITIMER_REAL, &never, nullptr);
  ::sigaction(SIGALRM, &former, nullptr);
}

TEST(RawHttp, ResponsesAboveTheLimitAreRefusedAndTheirConnectionIsHandedOverOpen) {
  constexpr std::size_t kMiB10 = 10485760;
  const struct {
    std::size_t size;
    bool taken;
  } cases[] = {{2048, true}, {10484736, true}, {10484737, false}, {kMiB10 + 300000, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.size);
    std::string bytes(c.size, 'x');
    bytes.back() = 'e';
    const auto server = serve({How::send, bytes});
    Connections held_open;
    testing::internal::CaptureStdout();
    const std::string response = fetch_raw_http(
        server->address(), "http://" + server->address() + "/", held_open, server->port());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.taken ? "" : kTooLargeNote);
    EXPECT_TRUE(response == (c.taken ? bytes : "-1")) << response.size();
    ASSERT_EQ(held_open.size(), c.taken ? 0U : 1U);
    for (const UniqueFd& connection : held_open) {
      EXPECT_EQ(::fcntl(connection.get(), F_GETFD), FD_CLOEXEC) << "children must not inherit it";
    }
  }
}

TEST(RawHttp, ADescriptorOfAnyNumberWorks) {
  rlimit former{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &former), 0);
  rlimit raised = former;
  raised.rlim_cur = FD_SETSIZE + 64;
  if (::setrlimit(RLIMIT_NOFILE, &raised) != 0) GTEST_SKIP() << "no more descriptors allowed";
  {
    const auto server = serve({How::send, "answer"});
    std::vector<UniqueFd> filling;
    do {
      filling.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    } while (filling.back() && filling.back().get() < FD_SETSIZE);
    EXPECT_EQ(fetch_from(*server).response, "answer");
  }
  ::setrlimit(RLIMIT_NOFILE, &former);
}

// A server that keeps the connection would be waited for until it gives up.
TEST(RawHttp, EndsItsSideOnceTheResponseIsCompleteAndReadsOn) {
  const std::string whole =
      "HTTP/1.1 200 OK\r\nConnection: keep-alive\r\nContent-Length: 4\r\n\r\nbody";
  const auto server = serve({How::keep, whole, "beyond"});
  EXPECT_EQ(fetch_from(*server), Fetched{whole + "beyond"});
  ASSERT_EQ(server->requests().size(), 1U);
  EXPECT_EQ(server->requests()[0].ended, test::Request::Ended::complete);
}

TEST(ResponseReader, TakesALengthOnlyIfEveryProgramReadsTheSame) {
  test::expect_cases("announced_length", [](const std::string& head) {
    const auto length = announced_length(head);
    return length ? std::to_string(*length) : "";
  });
}

TEST(RawHttp, APeerThatIsGoneIsNoticed) {
  const auto server = serve({How::send, std::string(kReceiveLimitBytes, 'x')});
  Connections held_open;
  get_raw_http(server->address(), "http://" + server->address() + "/", held_open, server->port());
  ASSERT_EQ(held_open.size(), 1U);
  const auto option = [fd = held_open[0].get()](int level, int name) {
    int value = 0;
    socklen_t size = sizeof value;
    EXPECT_EQ(::getsockopt(fd, level, name, &value, &size), 0);
    return value;
  };
  EXPECT_EQ(option(SOL_SOCKET, SO_KEEPALIVE), 1);
  const int idle = option(IPPROTO_TCP, TCP_KEEPIDLE), pause = option(IPPROTO_TCP, TCP_KEEPINTVL);
  EXPECT_LE(idle + pause * option(IPPROTO_TCP, TCP_KEEPCNT), 60);
}

// Downloaders

using Fetcher = std::string (*)(const std::string& temp_path, const std::string& url);

const struct Tool {
  const char* name;
  const char* prefix;
  const Downloader& downloader;
  Fetcher fetch;
} kTools[] = {
    {"curl", "curl -S --connect-timeout 3 -o ", kCurl, fetch_with_curl},
    {"fetch", "fetch -q -T3 -o ", kFetch, fetch_with_fetch},
    {"wget", "wget -q -T3 -t1 -O ", kWget, fetch_with_wget},
};

TEST(Downloader, OrdinaryCommandsAreByteForByteTheDocumentedOnes) {
  const std::string path = "l/sys/net/www-1.h_x.example:8080.jpg";
  const std::string url = "http://h.example/a_b~c/d.php?e=f&g=%20;(h)'!#*,@+i";
  const std::string arguments = path + " \"" + url + "\"";
  for (const Tool& tool : kTools) {
    EXPECT_EQ(download_command(tool.downloader, path, url), tool.prefix + arguments);
    const std::string brackets =
        tool.fetch == fetch_with_curl ? "\\[1-3\\]\\{a,b\\}" : "[1-3]{a,b}";
    EXPECT_EQ(download_command(tool.downloader, "t", "http://h/[1-3]{a,b}"),
              tool.prefix + std::string("t \"http://h/") + brackets + "\"");
    EXPECT_EQ(download_command(tool.downloader, "$t'", R"(\$`"')"),
              tool.prefix + std::string(R"X('$t'\''' "\\\$\`\"'")X"));
  }
}

TEST(Fetchers, RefuseControlCharactersAndOptions) {
  const auto server = serve({How::send, "answer"});
  const test::TempDir directory;
  const std::string url = "http://" + server->host() + "/x";
  const std::string controls("\0\1\t\n\r\x1f\x7f", 7);
  for (const char c : controls) {
    EXPECT_EQ(fetch_text(server->address(), url + c + "y", server->port()), "-1");
    EXPECT_EQ(address_fault(url + c + "y"), "the address holds a control character");
  }
  EXPECT_EQ(address_fault("-K"), "the address begins with \"-\"");
  // What lies at the temporary path is read back unless the address is refused.
  const std::string left = directory.write("left", "left behind");
  for (const Tool& tool : kTools) {
    for (const char c : controls) EXPECT_EQ(tool.fetch(left, url + c + "y"), "") << tool.name;
    EXPECT_EQ(tool.fetch(left, "-K" + left), "") << tool.name;
  }
  EXPECT_TRUE(server->requests().empty());
}

TEST(Downloader, ReturnsTheFileWithItsLastLineEnded) {
  const std::string bodies[] = {"abc", "a\n\nb\n\n",  "\n",
                                "",    "crlf\r\nx\r", std::string("nul\0\xff", 5)};
  const auto server = serve([&bodies](const std::string& url) {
    const std::string body = bodies[url.back() - '0'];
    return Answer{How::send, "HTTP/1.0 200 OK\r\nContent-Length: " + std::to_string(body.size()) +
                                 "\r\n\r\n" + body};
  });
  const test::TempDir directory;
  for (const Tool& tool : {kTools[0], kTools[2]}) {
    if (std::system(("command -v " + std::string(tool.name) + " >/dev/null").c_str()) != 0) {
      GTEST_SKIP() << tool.name << " is not installed";
    }
    const std::size_t requests = server->requests().size();
    for (std::size_t i = 0; i < std::size(bodies); ++i) {
      // Brackets may stand for many addresses, which these do not.
      const std::string url = "http://" + server->host() + "/[1-3]{a,b}$(x)" + std::to_string(i);
      const std::string text = tool.fetch(directory.path() + "/te'mp $x", url);
      const bool ended = bodies[i].empty() || bodies[i].back() == '\n';
      EXPECT_EQ(text, bodies[i] + (ended ? "" : "\n")) << tool.name << " " << i;
      EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
    }
    EXPECT_EQ(server->requests().size(), requests + std::size(bodies)) << tool.name;
  }
}

TEST(Downloader, NeverRemovesADirectory) {
  const test::TempDir directory;
  std::filesystem::create_directory(directory.path() + "/taken");
  for (const Tool& tool : kTools) {
    EXPECT_EQ(tool.fetch(directory.path() + "/taken", "http://127.0.0.1:1/"), "");
    EXPECT_TRUE(std::filesystem::is_directory(directory.path() + "/taken")) << tool.name;
  }
}

}  // namespace
}  // namespace toplist
