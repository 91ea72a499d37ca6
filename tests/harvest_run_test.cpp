// Whole runs that harvest thumbnails: over the loopback network, and with stand-ins for the tools.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "harvest/harvest_worker.h"
#include "support/loopback_server.h"
#include "support/site.h"
#include "util/unique_fd.h"

namespace toplist::test {
namespace {

constexpr unsigned kTimeLimitSeconds = 30;
constexpr std::size_t kFirstVisited = 11;
constexpr const char* kTempFolder = "l/sys/net";

/// Stands in for the download tool: notes its words, and copies what the site keeps of the web.
constexpr const char* kFetchScript =
    "#!/bin/sh\n"
    "words=$(printf '<%s>' \"$@\")\n"
    "printf '%s\\n' \"$words\" >>fetch.log\n"
    "cp \"web/$(printf %s \"$5\" | tr / _)\" \"$4\" 2>/dev/null\n";

/// Stands in for the image tool: notes its words.
constexpr const char* kToolScript =
    "#!/bin/sh\n"
    "words=$(printf '<%s>' \"$@\")\n"
    "printf '%s\\n' \"$words\" >>tool.log\n";

/// A command that nobody should run.
constexpr const char* kTrapScript = "#!/bin/sh\ntouch executed\n";

struct Visit {
  std::string domain;
  std::string url;
};

using Visits = std::vector<Visit>;

std::string sorted_lines(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
    lines.push_back(text.substr(at, end - at));
    at = end;
  }
  std::sort(lines.begin(), lines.end());
  std::string sorted;
  for (const std::string& line : lines) sorted += line;
  return sorted;
}

/// What the stand-ins note.
std::string fetch_line(const std::string& temp_name, const std::string& url) {
  return "<-q><-T3><-o><l/sys/net/" + temp_name + "><" + url + ">\n";
}

std::string tool_line(const std::string& host, const std::string& domain) {
  return "<-in><l/thumbs/" + host + ".jpg><-out><a b><l/thumbs/" + domain + ".jpg>\n";
}

std::string link_to(const std::string& picture) {
  return "<A HREF=\"/gallery/\"><IMG SRC=\"" + picture + "\" alt=x></A>\n";
}

/// A picture of this size, whose last byte is a line feed: a downloader adds none.
std::string picture(std::size_t size) { return std::string(size - 1, 'p') + '\n'; }

const std::string kPicture = picture(3000);

/// A site whose harvest is switched on, with stand-ins for the tools in its "bin". Its trades are
/// inactive, so nothing but the harvest happens in a run.
class HarvestSite : public Site {
 public:
  explicit HarvestSite(const Visits& visits) : Site(std::vector<Trade>{}) {
    for (const char* name : {kTempFolder, "bin", "web"}) make_dir(name);
    write_script("bin/fetch", kFetchScript);
    write_script("bin/tool", kToolScript);
    write_script("bin/trap", kTrapScript);
    configure("2");
    std::string index;
    for (std::size_t i = 0; i < kFirstVisited; ++i) {
      site::append_trade(index, site::make_trade(0, "early.e", "http://early.e/", 0));
    }
    for (const Visit& visit : visits) {
      site::append_trade(index, site::make_trade(0, visit.domain, visit.url, 0));
    }
    write("d/t/index", index);
  }

  void configure(const std::string& method, const std::string& thumbnail_optional = "1") const {
    site::HarvestFile values;
    values.image_tool = "tool -in";
    values.image_tool_args = "-out 'a b'";
    values.fetch_method = method;
    values.thumbnail_optional = thumbnail_optional;
    values.harvest = "1";
    write("d/tl/vantaig", site::encode_harvest_file(values));
  }

  /// What the stand-in finds at an address.
  void serve(std::string url, std::string_view bytes) const {
    std::replace(url.begin(), url.end(), '/', '_');
    write("web/" + url, bytes);
  }

  [[nodiscard]] RunResult harvest() const { return start({.environment = {"PATH=" + tools()}}); }

  /// Runs the worker for one trade in a child process, as the run would in a thread.
  void harvest_alone(const TradeRecord& trade) const {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::alarm(kTimeLimitSeconds);
      ::setenv("PATH", tools().c_str(), 1);
      if (::chdir(path("").c_str()) != 0) ::_exit(1);
      harvest_trade(trade);
      ::_exit(0);
    }
    int ended = 0;
    ASSERT_EQ(::waitpid(child, &ended, 0), child);
    EXPECT_EQ(ended, 0);
  }

  /// The names in a directory and what they hold.
  [[nodiscard]] std::map<std::string, std::string> listing(const std::string& directory) const {
    std::map<std::string, std::string> files;
    for (const auto& [name, bytes] : contents()) {
      if (name.starts_with(directory + "/")) files[name.substr(directory.size() + 1)] = bytes;
    }
    return files;
  }

 private:
  void write_script(const std::string& name, const char* text) const {
    write(name, text);
    ::chmod(path(name).c_str(), 0700);
  }

  [[nodiscard]] std::string tools() const { return path("bin") + ":/usr/local/bin:/usr/bin:/bin"; }
};

using Files = std::map<std::string, std::string>;

TEST(HarvestRun, NamesFilesByHostAndThumbnailsByDomain) {
  const HarvestSite site(Visits{{"domain.e", "http://www.Host.e:80/in?x"}});
  site.serve("http://www.Host.e:80/in?x",
             link_to("http://far.e/12345") + link_to("pics/12345.JPG"));
  const std::string bytes = picture(2048);
  site.serve("http://Host.e:80/pics/12345.jpg", bytes.substr(0, 2047));
  site.write("l/thumbs/domain.e.jpg", std::string(9000, 'o'));  // of a run before, and longer

  EXPECT_EQ(site.harvest(), RunResult{});
  EXPECT_EQ(site.read("fetch.log"),
            fetch_line("Host.e:80", "http://www.Host.e:80/in?x") +
                fetch_line("Host.e:80.jpg", "http://far.e/12345") +
                fetch_line("Host.e:80.jpg", "http://Host.e:80/pics/12345.jpg"));
  EXPECT_EQ(site.read("tool.log"), tool_line("Host.e:80", "domain.e"));
  // The line feed that every downloaded text ends with makes it just large enough.
  EXPECT_EQ(site.listing("l/thumbs"), (Files{{"domain.e.jpg", bytes}}));
  EXPECT_EQ(site.listing(kTempFolder), Files{});
  EXPECT_EQ(site.log(), "");
}

TEST(HarvestRun, TakesTheFirstAcceptablePictureOfEachPage) {
  const struct {
    std::string host;
    std::vector<std::string> links;
    Files web;  ///< pictures by path
    bool stored;
    std::size_t fetches;
  } cases[] = {
      {"none.e", {}, {}, false, 1},
      {"digits.e", {"/1234.jpg"}, {{"/1234.jpg", kPicture}}, false, 1},
      {"logo.e", {"/12345.jpg"}, {{"/12345.jpg", kPicture}}, false, 1},
      {"words.e", {"/Home12345", "/BOOK12345", "/logo12345"}, {}, false, 1},
      {"small.e", {"/11111", "/22222"}, {{"/11111", picture(2047)}}, false, 3},
      {"large.e", {"/11111", "/22222"}, {{"/11111", picture(2048)}}, true, 2},
      {"html.e",
       {"/11111", "/22222"},
       {{"/11111", "<html>" + kPicture}, {"/22222", kPicture}},
       false,
       2},
      {"upper.e", {"/11111", "/22222"}, {{"/11111", "<HTML>" + kPicture}}, true, 2},
      {"ten.e", std::vector<std::string>(10, "/11111"), {}, false, 11},
      {"eleven.e", std::vector<std::string>(11, "/11111"), {}, false, 11},
  };
  Visits visits;
  for (const auto& c : cases) visits.push_back({c.host, "http://" + c.host + "/"});
  const HarvestSite site(visits);
  for (const auto& c : cases) {
    std::string page;
    for (const std::string& link : c.links) page += link_to(link);
    site.serve("http://" + c.host + "/", page);
    for (const auto& [path, bytes] : c.web) site.serve("http://" + c.host + path, bytes);
  }
  EXPECT_EQ(site.harvest(), RunResult{});
  const Files thumbs = site.listing("l/thumbs");
  const std::string log = site.read("fetch.log");
  for (const auto& c : cases) {
    EXPECT_EQ(thumbs.contains(c.host + ".jpg"), c.stored) << c.host;
    std::size_t fetches = 0;
    const std::string mark = "<http://" + c.host + "/";
    for (std::size_t at = 0; (at = log.find(mark, at)) != std::string::npos; ++at) ++fetches;
    EXPECT_EQ(fetches, c.fetches) << c.host;
  }
  EXPECT_EQ(log.find("early.e"), std::string::npos);
  EXPECT_EQ(site.listing(kTempFolder), Files{});
}

TEST(HarvestRun, NothingIsExecutedOutOfHostilePagesHostsAndDomains) {
  // What a partner may choose as host and domain, and what his page holds; quotes that are doubled
  // there survive one by one.
  const struct {
    std::string name, in_page, address;
  } cases[] = {
      {"$(touch executed)", "$(trap)", "$(trap)"},
      {"`touch executed`", "`trap`", "`trap`"},
      {";touch executed;", ";trap;", ";trap;"},
      {"\";touch executed;\"", "\"\";trap;\"\"", "\";trap;\""},
      {"';touch executed;'", "'';trap;''", "';trap;'"},
      {"&touch executed&", "&trap&", "&trap&"},
      {"|touch executed|", "|trap|", "|trap|"},
      {"\\\";touch executed;\\\"", "\\\"\";trap;\\\"\"", "\\\";trap;\\\""},
      {"\\$(trap)\\`trap\\`", "\\$(trap)\\\\`trap\\`", "\\$(trap)\\\\`trap\\`"},
  };
  Visits visits;
  std::string fetch_log, tool_log;
  Files thumbs;
  for (const auto& c : cases) visits.push_back({"d" + c.name, "http://h" + c.name + "/p"});
  const HarvestSite site(visits);
  for (const auto& c : cases) {
    const std::string host = "h" + c.name, address = "http://" + host + "/12345" + c.address;
    site.serve("http://" + host + "/p", link_to("/12345" + c.in_page));
    site.serve(address, kPicture);
    fetch_log += fetch_line(host, "http://" + host + "/p") + fetch_line(host + ".jpg", address);
    tool_log += tool_line(host, "d" + c.name);
    thumbs["d" + c.name + ".jpg"] = kPicture;
  }
  EXPECT_EQ(site.harvest(), RunResult{});
  EXPECT_FALSE(site.contents().contains("executed"));
  EXPECT_EQ(sorted_lines(site.read("fetch.log")), sorted_lines(fetch_log));
  EXPECT_EQ(sorted_lines(site.read("tool.log")), sorted_lines(tool_log));
  EXPECT_EQ(site.listing("l/thumbs"), thumbs);
  EXPECT_EQ(site.listing(kTempFolder), Files{});
}

TEST(HarvestRun, TradesThatWouldLeaveTheirPlaceGetNothing) {
  const HarvestSite site(Visits{{"a/b", "http://slash.e/"},
                                {"../../x", "http://dots.e/"},
                                {"empty.e", ""},
                                {"scheme.e", "http://"},
                                {"path.e", "http:///12345"},
                                {"option.e", "-Koption"},
                                {"control.e", "http://control.e/\t/"},
                                {"directory.e", "http://directory.e/"}});
  for (const char* host : {"slash.e", "dots.e"}) {
    site.serve("http://" + std::string(host) + "/", link_to("/12345"));
    site.serve("http://" + std::string(host) + "/12345", kPicture);
  }
  site.make_dir("l/thumbs/a");
  site.make_dir("l/sys/net/directory.e");
  auto expected = site.contents();
  EXPECT_EQ(site.harvest(), RunResult{});
  auto found = site.contents();
  const std::string log = found["fetch.log"];
  found.erase("fetch.log");
  EXPECT_EQ(found, expected);
  for (const char* url : {"<>", "<http://>", "<http:///12345>", "<-Koption>", "control"}) {
    EXPECT_EQ(log.find(url), std::string::npos) << url;
  }
}

TEST(HarvestRun, TheToolRunsEvenIfTheThumbnailCannotBeWritten) {
  const HarvestSite site(Visits{{"d.e", "http://h.e/"}});
  site.serve("http://h.e/", link_to("/12345"));
  site.serve("http://h.e/12345", kPicture);
  site.make_dir("l/thumbs/d.e.jpg");
  EXPECT_EQ(site.harvest(), RunResult{});
  EXPECT_EQ(site.read("tool.log"), tool_line("h.e", "d.e"));
  EXPECT_EQ(site.log(), "");
}

TEST(HarvestRun, TheConfigurationDecidesWhatIsFetched) {
  const struct {
    const char* configuration;
    std::size_t fetches;
    bool stored;
  } cases[] = {
      {"l/thumbs/\ntool -in\n-out 'a b'\n\n2\n1\n1\n", 2, true},
      {"l/thumbs/\ntool -in\n-out 'a b'\n\n2\n1\n24", 2, true},
      {"l/thumbs/\ntool\n\n\n2\n1\n25\n", 0, false},
      {"l/thumbs/\ntool\n\n\n2\n1\n0\n", 0, false},
      {"l/thumbs/\ntool\n\n\n2\n1\n", 0, false},
      {"l/thumbs/\ntool\n\n\n2\n", 0, false},
      {"l/thumbs/\ntool\n\n\n4\n1\n1\n", 0, false},
      {"l/thumbs/\ntool\n\n\n\n1\n1\n", 0, false},
      {"l/thumbs/\ntool\n\n\n02\n1\n1\n", 0, false},
      {"l/thumbs/\ntool\n\n\n2\r\n1\n1\n", 0, false},
      {"l/thumbs/\ntool\n\n\n2\n1\n1\nmore\n", 1, false},  // the page, but no picture
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.configuration);
    const HarvestSite site(Visits{{"d.e", "http://h.e/"}});
    site.serve("http://h.e/", link_to("/12345"));
    site.serve("http://h.e/12345", kPicture);
    site.write("d/tl/vantaig", c.configuration);
    EXPECT_EQ(site.harvest(), RunResult{});
    const std::string log = site.read("fetch.log");
    EXPECT_EQ(static_cast<std::size_t>(std::count(log.begin(), log.end(), '\n')), c.fetches);
    EXPECT_EQ(site.listing("l/thumbs"), c.stored ? Files({{"d.e.jpg", kPicture}}) : Files{});
    EXPECT_EQ(site.log(), "");
  }
}

TEST(HarvestWorker, FillsAShortConfigurationUp) {
  const HarvestSite site(Visits{});
  site.serve("http://h.e/", link_to("/12345"));
  site.serve("http://h.e/12345", kPicture);
  site.write("d/tl/vantaig", "l/thumbs/\ntool -in\n-out 'a b'\n\n2\n");
  site.harvest_alone(site::make_trade(1, "d.e", "http://h.e/"));
  EXPECT_EQ(site.listing("l/thumbs"), (Files{{"d.e.jpg", kPicture}}));
  EXPECT_EQ(site.read("tool.log"), tool_line("h.e", "d.e"));
  EXPECT_EQ(site.log(), "");
}

TEST(HarvestWorker, LogsAMissingConfigurationAndFetchesNothing) {
  const HarvestSite site(Visits{});
  site.remove("d/tl/vantaig");
  site.harvest_alone(site::make_trade(1, "d.e", "http://h.e/"));
  EXPECT_EQ(site.log(), "|<time>|toplist|1|d&#47;tl&#47;vantaig|1||||\n");
  EXPECT_EQ(site.read("fetch.log"), "");
}

// Over the network

bool installed(const std::string& tool) {
  return std::system(("command -v " + tool + " >/dev/null").c_str()) == 0;
}

std::unique_ptr<LoopbackServer> listen(std::size_t addresses, std::uint16_t port,
                                       LoopbackServer::Handler handler) {
  try {
    return std::make_unique<LoopbackServer>(loopback_addresses(addresses), port,
                                            std::move(handler));
  } catch (const std::system_error&) {
    return nullptr;
  }
}

constexpr const char* kNoPort80 = "port 80 of a loopback address cannot be bound";

std::string partner_picture(const std::string& url) {
  return "of " + url + "\r\n\r\n" + std::string(5000, '\xff');
}

/// The partners of trades 11 to 19, by path; the host tells them apart.
Answer partner_site(const std::string& url) {
  const auto is_at = [&url](const char* path) { return url.ends_with(path); };
  const std::string far = "<a href=http://far.e/><img src=/pic-00000.jpg></a>";
  std::string body;
  if (is_at("/none")) body = "<html>no links</html>";
  if (is_at("/foreign")) body = far;
  if (is_at("/small")) body = link_to("/small-00000.jpg");
  if (is_at("/first")) body = link_to("/pic-00000.jpg") + link_to("/small-00000.jpg");
  if (is_at("/second")) body = far + link_to("/missing-00000.jpg") + link_to("/pic-00000.jpg");
  if (is_at("/small-00000.jpg")) body = std::string(1500, 's');
  if (is_at("/pic-00000.jpg")) body = partner_picture(url);
  if (is_at("/reset")) return {Answer::How::reset, ""};
  if (body.empty()) return {Answer::How::send, "HTTP/1.0 404 Not Found\r\n\r\nnone"};
  return {Answer::How::send, "HTTP/1.0 200 OK\r\nConnection: close\r\n\r\n" + body};
}

constexpr const char* kPartnerPages[] = {"/first", "/first", "/none",   "/gone",   "/small",
                                         "/first", "/reset", "/second", "/foreign"};
constexpr std::size_t kPartners = std::size(kPartnerPages);
constexpr std::size_t kTrades = kFirstVisited + kPartners;
constexpr std::size_t kInactive = 12;
/// Trades with a thumbnail of a run before.
constexpr std::size_t kOldUnvisited = 3, kOldVisited = 16;

std::string domain_of(std::size_t i) { return "trade" + std::to_string(i) + ".e"; }

/// A site of 20 trades, ranked as they stand, whose toplist shows those with a thumbnail.
class PartnerSite : public HarvestSite {
 public:
  PartnerSite(const std::string& method, const std::vector<std::string>& hosts)
      : HarvestSite(Visits{}) {
    configure(method, "0");
    std::string index;
    for (std::size_t i = 0; i < kTrades; ++i) {
      Trade trade{.id = static_cast<std::int32_t>(i), .domain = domain_of(i)};
      trade.periods[0].rin = static_cast<std::int32_t>(100 - i);
      add_trade(trade);
      urls_.push_back("http://" + (i < kFirstVisited ? hosts[0] + "/early"
                                                     : hosts[i - kFirstVisited] +
                                                           kPartnerPages[i - kFirstVisited]));
      site::append_trade(
          index, site::make_trade(trade.id, trade.domain, urls_.back(), i == kInactive ? 0 : 1));
    }
    write("d/t/index", index);
    std::string shown;
    for (const char* rank : {"000", "001", "002", "003", "004"}) {
      shown += "%%dom_" + std::string(rank) + "%%\n";
    }
    add_toplist("top", shown);
    for (const std::size_t i : {kOldUnvisited, kOldVisited}) {
      write("l/thumbs/" + domain_of(i) + ".jpg", "of a run before");
    }
  }

  [[nodiscard]] const std::vector<std::string>& urls() const { return urls_; }

  /// Keeps what the partners' servers would send where the stand-in finds it.
  void keep_partner_sites(const std::vector<std::string>& hosts) const {
    for (const std::string& host : hosts) {
      for (const char* path : {"/first", "/none", "/small", "/second", "/foreign",
                               "/small-00000.jpg", "/pic-00000.jpg"}) {
        std::string body = partner_site("http://" + host + path).bytes;
        serve("http://" + host + path, body.substr(body.find("\r\n\r\n") + 4));
      }
    }
  }

 private:
  std::vector<std::string> urls_;
};

struct Method {
  const char* number;
  const char* tool;  ///< "sh" where none is needed
  std::uint16_t port;
};

void PrintTo(const Method& method, std::ostream* stream) {
  *stream << method.number << " with " << method.tool;
}

class HarvestMethods : public testing::TestWithParam<Method> {};

TEST_P(HarvestMethods, GiveEachTradeItsThumbnailAndShowThoseThatHaveOne) {
  const Method& method = GetParam();
  if (!installed(method.tool)) GTEST_SKIP() << method.tool << " is not installed";
  const auto server = listen(kPartners, method.port, partner_site);
  if (!server) GTEST_SKIP() << kNoPort80;
  std::vector<std::string> hosts;
  for (std::size_t n = 0; n < kPartners; ++n) hosts.push_back(server->host(n));
  const PartnerSite site(method.number, hosts);
  site.keep_partner_sites(hosts);

  const RunResult result = site.harvest();  // the tools may talk on standard error
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.signal, 0);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(site.log(), "");

  Files thumbs{{domain_of(kOldUnvisited) + ".jpg", "of a run before"}};
  const std::string last = method.port == 80 ? "" : "\n";  // which downloaded texts end with
  for (const std::size_t i : {11U, 12U, 16U, 18U}) {
    thumbs[domain_of(i) + ".jpg"] =
        partner_picture("http://" + hosts[i - kFirstVisited] + "/pic-00000.jpg") + last;
  }
  EXPECT_EQ(site.listing("l/thumbs"), thumbs);
  EXPECT_EQ(site.listing(kTempFolder), Files{});
  EXPECT_EQ(site.read("top.html"), domain_of(kOldUnvisited) + "\n" + domain_of(11) + "\n" +
                                       domain_of(16) + "\n" + domain_of(18) + "\n \n");

  std::string asked_for = site.read("fetch.log");
  for (const Request& request : server->requests()) asked_for += "<" + request.url + ">\n";
  for (std::size_t i = kFirstVisited; i < kTrades; ++i) {
    EXPECT_NE(asked_for.find("<" + site.urls()[i] + ">"), std::string::npos) << i;
  }
  EXPECT_EQ(asked_for.find("/early"), std::string::npos);
}

std::string name_of(const testing::TestParamInfo<Method>& info) {
  return "Method" + std::string(info.param.number);
}

INSTANTIATE_TEST_SUITE_P(Each, HarvestMethods,
                         testing::Values(Method{"0", "sh", 80}, Method{"1", "wget", 0},
                                         Method{"2", "sh", 0}, Method{"3", "curl", 0}),
                         name_of);

TEST(HarvestRun, SilentServersAreNotedOnStandardOutput) {
  const auto server = listen(3, 80, [](const std::string& url) {
    return url.ends_with("/silent") ? Answer{Answer::How::silence} : partner_site(url);
  });
  if (!server) GTEST_SKIP() << kNoPort80;
  const HarvestSite site(Visits{{"a.e", "http://" + server->host(0) + "/silent"},
                                {"b.e", "http://" + server->host(1) + "/first"},
                                {"c.e", "http://" + server->host(2) + "/silent"}});
  site.configure("0");
  EXPECT_EQ(site.harvest(), (RunResult{.out = "<font color=red>recv() timeout</font><br>"
                                              "<font color=red>recv() timeout</font><br>"}));
  EXPECT_TRUE(site.contents().contains("l/thumbs/b.e.jpg"));
}

TEST(HarvestRun, ThePictureMayBeOnAnotherHost) {
  const std::string picture_url = "http://" + loopback_addresses(2)[1] + "/pic-00000.jpg";
  const auto server = listen(2, 80, [&picture_url](const std::string& url) {
    if (!url.ends_with("/in")) return partner_site(url);
    return Answer{Answer::How::send, "HTTP/1.0 200 OK\r\n\r\n" + link_to(picture_url)};
  });
  if (!server) GTEST_SKIP() << kNoPort80;
  const HarvestSite site(Visits{{"a.e", "http://" + server->host(0) + "/in"}});
  site.configure("0");
  EXPECT_EQ(site.harvest(), RunResult{});
  EXPECT_EQ(site.listing("l/thumbs"), (Files{{"a.e.jpg", partner_picture(picture_url)}}));
}

TEST(HarvestWorker, WithoutAFetchMethodAsksNobody) {
  const std::string address = loopback_addresses(1)[0];
  UniqueFd listener;
  try {
    std::uint16_t port = 80;
    listener = bind_socket(address, port);
  } catch (const std::system_error&) {
    GTEST_SKIP() << kNoPort80;
  }
  ASSERT_EQ(::listen(listener.get(), 1), 0);
  const HarvestSite site(Visits{});
  site.write("d/tl/vantaig", "l/thumbs/\ntool -in\n");
  site.harvest_alone(site::make_trade(1, "d.e", "http://" + address + "/"));
  pollfd asked{listener.get(), POLLIN, 0};
  EXPECT_EQ(::poll(&asked, 1, 0), 0);
  EXPECT_EQ(site.read("fetch.log"), "");
}

}  // namespace
}  // namespace toplist::test
