// Whole runs that harvest thumbnails: over the loopback network, and with stand-ins for the tools.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "harvest/harvest.h"
#include "harvest/harvest_worker.h"
#include "net/raw_http.h"
#include "support/loopback_server.h"
#include "support/sanitized.h"
#include "support/site.h"
#include "support/text_cases.h"

namespace toplist::test {
namespace {

constexpr std::size_t kFirstVisited = 11;

struct Visit {
  std::string domain;
  std::string url;
};

using Visits = std::vector<Visit>;
using Files = std::map<std::string, std::string>;

/// Threads write their lines in any order.
std::multiset<std::string> lines_of(const std::string& text) {
  std::multiset<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.insert(line);
  return lines;
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
    for (const char* name : {"l/sys/net", "bin", "web"}) make_dir(name);
    for (const char* tool : {"fetch", "tool", "trap"}) add_stand_in(tool, tool);
    configure("2");
    std::string index;
    for (std::size_t i = 0; i < kFirstVisited; ++i) {
      ctl::append_trade(index, ctl::make_trade(0, "early.e", "http://early.e/", 0));
    }
    for (const Visit& visit : visits) {
      ctl::append_trade(index, ctl::make_trade(0, visit.domain, visit.url, 0));
    }
    write("d/t/index", index);
  }

  void configure(const std::string& method, const std::string& thumbnail_optional = "1") const {
    ctl::HarvestFile values;
    values.image_tool = "tool -in";
    values.image_tool_args = "-out 'a b'";
    values.fetch_method = method;
    values.thumbnail_optional = thumbnail_optional;
    values.harvest = "1";
    write("d/tl/vantaig", ctl::encode_harvest_file(values));
  }

  /// What the stand-in finds at an address.
  void serve(std::string url, std::string_view bytes) const {
    std::replace(url.begin(), url.end(), '/', '_');
    write("web/" + url, bytes);
  }

  /// A partner's page with one picture.
  void serve_partner(const std::string& host) const {
    serve("http://" + host + "/", link_to("/12345"));
    serve("http://" + host + "/12345", kPicture);
  }

  [[nodiscard]] RunResult harvest(const std::string& limit = "") const {
    return start({.environment = {"PATH=" + tools()}, .limit = limit});
  }

  /// Runs the worker for one trade here, as the run would in a thread.
  void harvest_alone(const std::string& url) const {
    const std::filesystem::path before = std::filesystem::current_path();
    ::setenv("PATH", tools().c_str(), 1);
    std::filesystem::current_path(path(""));
    Connections held_open;
    harvest_trade(ctl::make_trade(1, "d.e", url),
                  [&held_open](const std::string& host, const std::string& address) {
                    return fetch_raw_http(host, address, held_open);
                  });
    std::filesystem::current_path(before);
  }

  /// The names in a directory and what they hold.
  [[nodiscard]] Files listing(const std::string& directory) const {
    Files files;
    for (const auto& [name, bytes] : contents()) {
      if (name.starts_with(directory + "/")) files[name.substr(directory.size() + 1)] = bytes;
    }
    return files;
  }

 private:
  [[nodiscard]] std::string tools() const { return path("bin") + ":/usr/local/bin:/usr/bin:/bin"; }
};

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
  EXPECT_EQ(site.listing("l/sys/net"), Files{});
  EXPECT_EQ(site.log(), "");
}

TEST(HarvestRun, NothingIsExecutedOutOfHostilePagesHostsAndDomains) {
  // What a partner may choose as host and domain, and what his page holds; quotes that are doubled
  // there survive one by one.
  const struct {
    std::string name, in_page, address;
  } cases[] = {
      {"$(touch executed)", "$(trap)", "$(trap)"},
      {";touch executed;", ";trap;", ";trap;"},
      {"\";touch executed;\"", "\"\";trap;\"\"", "\";trap;\""},
      {"';touch executed;'", "'';trap;''", "';trap;'"},
      {"&touch executed&", "&trap&", "&trap&"},
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
  EXPECT_EQ(lines_of(site.read("fetch.log")), lines_of(fetch_log));
  EXPECT_EQ(lines_of(site.read("tool.log")), lines_of(tool_log));
  EXPECT_EQ(site.listing("l/thumbs"), thumbs);
  EXPECT_EQ(site.listing("l/sys/net"), Files{});
}

TEST(HarvestRun, TradesThatWouldLeaveTheirPlaceGetNothing) {
  const HarvestSite site(Visits{{"../../x", "http://dots.e/"},
                                {"a/../../x", "http://dots2.e/"},
                                {"empty.e", ""},
                                {"scheme.e", "http://"},
                                {"path.e", "http:///12345"},
                                {"option.e", "-Koption"},
                                {"control.e", "http://control.e/\t/"},
                                {"directory.e", "http://directory.e/"}});
  site.serve_partner("dots.e");
  site.serve_partner("dots2.e");
  site.make_dir("l/thumbs/a");
  site.make_dir("l/sys/net/directory.e");
  const auto expected = site.contents();
  EXPECT_EQ(site.harvest(), RunResult{});
  auto found = site.contents();
  const std::string log = found["fetch.log"];
  found.erase("fetch.log");
  EXPECT_EQ(found, expected);
  for (const char* url : {"<>", "<http://>", "<http:///12345>", "<-Koption>", "control"}) {
    EXPECT_EQ(log.find(url), std::string::npos) << url;
  }
}

// Thumbnail folder and domain; no path where the thumbnail would be outside of the folder.
TEST(TradeHarvest, StoresNothingOutsideOfTheThumbnailFolder) {
  expect_cases("thumbnail_path", [](const std::string& words) {
    const std::size_t blank = words.find(' ');
    const HarvestConfig config = parse_harvest_config(words.substr(0, blank), "");
    const TradeRecord trade = ctl::make_trade(1, words.substr(blank + 1), "");
    return TradeHarvest(trade, config, nullptr).thumbnail_path();
  });
}

// As pages write them: src="/12345.jpg" and then the end of the line.
TEST(HarvestRun, ControlCharactersAtTheEndsOfAddressesAreNoPartOfThem) {
  const HarvestSite site(Visits{{"d.e", "\thttp://h.e/\r\n"}});
  site.serve("http://h.e/", "<a href=/><img src=\"/12345\"\n alt=x></a>");
  site.serve("http://h.e/12345", kPicture);
  EXPECT_EQ(site.harvest(), RunResult{});
  EXPECT_EQ(site.read("fetch.log"),
            fetch_line("h.e", "http://h.e/") + fetch_line("h.e.jpg", "http://h.e/12345"));
  EXPECT_EQ(site.listing("l/thumbs"), (Files{{"d.e.jpg", kPicture}}));
}

TEST(HarvestRun, ADownloadLargerThanTheMemoryEndsThatTradesHarvestOnly) {
#ifdef TOPLIST_SANITIZED
  GTEST_SKIP() << "sanitizers end the process themselves when an allocation fails";
#endif
  const HarvestSite site(Visits{{"huge.e", "http://huge.e/"}, {"d.e", "http://h.e/"}});
  site.serve_partner("h.e");
  site.write("bin/fetch",
             site.read("bin/fetch") + "case $5 in *huge*) truncate -s 1T \"$4\" ;; esac\n");
  EXPECT_EQ(site.harvest("-v 4000000"), RunResult{});  // KiB
  site.remove("l/sys/net");                            // which holds it still
  EXPECT_EQ(site.listing("l/thumbs"), (Files{{"d.e.jpg", kPicture}}));
  EXPECT_EQ(site.log(), "");
}

TEST(HarvestRun, TheToolRunsEvenIfTheThumbnailCannotBeWritten) {
  const HarvestSite site(Visits{{"d.e", "http://h.e/"}});
  site.serve_partner("h.e");
  site.make_dir("l/thumbs/d.e.jpg");
  EXPECT_EQ(site.harvest(), RunResult{});
  EXPECT_EQ(site.read("tool.log"), tool_line("h.e", "d.e"));
  EXPECT_EQ(site.log(), "");
}

TEST(HarvestRun, TheConfigurationDecidesWhatIsFetched) {
  const struct {
    const char* configuration;
    std::size_t fetches;  ///< of the page, and of the picture
  } cases[] = {
      {"l/thumbs/\ntool\n\n\n2\n1\n24", 2},    {"l/thumbs/\ntool\n\n\n2\n1\n 1x\n", 2},
      {"l/thumbs/\ntool\n\n\n2\n1\n25\n", 0},  {"l/thumbs/\ntool\n\n\n2\n", 0},
      {"l/thumbs/\ntool\n\n\n4\n1\n1\n", 0},   {"l/thumbs/\ntool\n\n\n02\n1\n1\n", 0},
      {"l/thumbs/\ntool\n\n\n2\r\n1\n1\n", 0}, {"l/thumbs/\ntool\n\n\n2\n1\n1\nmore\n", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.configuration);
    const HarvestSite site(Visits{{"d.e", "http://h.e/"}});
    site.serve_partner("h.e");
    site.write("d/tl/vantaig", c.configuration);
    EXPECT_EQ(site.harvest(), RunResult{});
    EXPECT_EQ(lines_of(site.read("fetch.log")).size(), c.fetches);
    EXPECT_EQ(site.listing("l/thumbs").size(), c.fetches == 2 ? 1U : 0U);
    EXPECT_EQ(site.log(), "");
  }
}

// By the time a worker reads the configuration afresh, it may be another one.
TEST(HarvestWorker, FillsAShortConfigurationUpAndLogsAMissingOne) {
  const HarvestSite site(Visits{});
  site.serve_partner("h.e");
  site.write("d/tl/vantaig", "l/thumbs/\ntool -in\n-out 'a b'\n\n2\n");
  site.harvest_alone("http://h.e/");
  EXPECT_EQ(site.listing("l/thumbs"), (Files{{"d.e.jpg", kPicture}}));
  EXPECT_EQ(site.read("tool.log"), tool_line("h.e", "d.e"));
  EXPECT_EQ(site.log(), "");

  site.remove("d/tl/vantaig");
  site.remove("fetch.log");
  site.harvest_alone("http://h.e/");
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

/// What a partner has, by path. The host tells the pictures apart.
Files partner_files(const std::string& host) {
  const std::string far = "<a href=http://far.e/><img src=/pic-00000.jpg></a>";
  return {
      {"/none", "<html>no links</html>"},
      {"/foreign", far},
      {"/small", link_to("/small-00000.jpg")},
      {"/first", link_to("/pic-00000.jpg") + link_to("/small-00000.jpg")},
      {"/second", far + link_to("/missing-00000.jpg") + link_to("/pic-00000.jpg")},
      {"/small-00000.jpg", std::string(1500, 's')},
      {"/pic-00000.jpg", partner_picture("http://" + host + "/pic-00000.jpg")},
  };
}

Answer partner_site(const std::string& url) {
  if (url.ends_with("/reset")) return {Answer::How::reset, ""};
  const std::size_t host = std::string("http://").size();
  const std::size_t path = url.rfind('/');
  const Files files = partner_files(url.substr(host, path - host));
  const auto file = files.find(url.substr(path));
  if (file == files.end()) return {Answer::How::send, "HTTP/1.0 404 Not Found\r\n\r\nnone"};
  const std::string& body = file->second;
  // Some servers keep the connection, as the built-in client asks for, and wait for the client's
  // end.
  if (file->first == "/first" || file->first == "/second") {
    return {Answer::How::keep, "HTTP/1.1 200 OK\r\nConnection: keep-alive\r\nContent-Length: " +
                                   std::to_string(body.size()) + "\r\n\r\n" + body};
  }
  return {Answer::How::send, "HTTP/1.0 200 OK\r\nConnection: close\r\n\r\n" + body};
}

/// The pages of trades 11 to 19.
constexpr std::array kPartnerPages = {"/first", "/first", "/none",   "/gone",   "/small",
                                      "/first", "/reset", "/second", "/foreign"};
constexpr std::size_t kPartners = kPartnerPages.size();
constexpr std::size_t kTrades = kFirstVisited + kPartners;
constexpr std::size_t kInactive = 12;
/// Trades with a thumbnail of a run before.
constexpr std::size_t kOldUnvisited = 3, kOldVisited = 16;

std::string domain_of(std::size_t i) { return "trade" + std::to_string(i) + ".e"; }

/// A site of 20 trades, ranked as they stand, whose toplist shows those with a thumbnail.
class PartnerSite : public HarvestSite {
 public:
  PartnerSite(const std::string& method, const LoopbackServer& server) : HarvestSite(Visits{}) {
    configure(method, "0");
    std::string index;
    for (std::size_t i = 0; i < kTrades; ++i) {
      Trade trade{.id = static_cast<std::int32_t>(i), .domain = domain_of(i)};
      trade.periods[0].rin = static_cast<std::int32_t>(100 - i);
      add_trade(trade);
      const std::string early = "http://" + server.host() + "/early";
      const std::string url = i < kFirstVisited ? early : url_at(server, i);
      const int status = i == kInactive ? 0 : 1;
      ctl::append_trade(index, ctl::make_trade(trade.id, trade.domain, url, status));
    }
    write("d/t/index", index);
    add_toplist("top", "%%dom_000%%\n%%dom_001%%\n%%dom_002%%\n%%dom_003%%\n%%dom_004%%\n");
    for (const std::size_t i : {kOldUnvisited, kOldVisited}) {
      write("l/thumbs/" + domain_of(i) + ".jpg", "of a run before");
    }
    for (std::size_t n = 0; n < kPartners; ++n) keep_files_of(server.host(n));
  }

  /// The page of a visited trade.
  static std::string url_at(const LoopbackServer& server, std::size_t trade) {
    const std::size_t partner = trade - kFirstVisited;
    return "http://" + server.host(partner) + kPartnerPages[partner];
  }

 private:
  /// Keeps what the partner's server would send where the stand-in finds it.
  void keep_files_of(const std::string& host) const {
    const std::string root = "http://" + host;
    for (const auto& [path, bytes] : partner_files(host)) serve(root + path, bytes);
  }
};

struct Method {
  const char* number;
  const char* tool;  ///< "sh" where none is needed
  std::uint16_t port;
};

/// What names the method's test.
void PrintTo(const Method& method, std::ostream* stream) { *stream << "Method" << method.number; }

class HarvestMethods : public testing::TestWithParam<Method> {};

TEST_P(HarvestMethods, GiveEachTradeItsThumbnailAndShowThoseThatHaveOne) {
  const Method& method = GetParam();
  if (!installed(method.tool)) GTEST_SKIP() << method.tool << " is not installed";
  const auto server = listen(kPartners, method.port, partner_site);
  if (!server) GTEST_SKIP() << kNoPort80;
  const PartnerSite site(method.number, *server);

  const RunResult result = site.harvest();  // the tools may talk on standard error
  EXPECT_EQ(result, RunResult{.err = result.err});
  EXPECT_EQ(site.log(), "");

  Files thumbs{{domain_of(kOldUnvisited) + ".jpg", "of a run before"}};
  const std::string last = method.port == 80 ? "" : "\n";  // which downloaded texts end with
  for (const std::size_t i : {11U, 12U, 16U, 18U}) {
    thumbs[domain_of(i) + ".jpg"] =
        partner_picture("http://" + server->host(i - kFirstVisited) + "/pic-00000.jpg") + last;
  }
  EXPECT_EQ(site.listing("l/thumbs"), thumbs);
  EXPECT_EQ(site.listing("l/sys/net"), Files{});
  EXPECT_EQ(site.read("top.html"), "trade3.e\ntrade11.e\ntrade16.e\ntrade18.e\n \n");

  std::string asked_for = site.read("fetch.log");
  for (const Request& request : server->requests()) {
    asked_for += "<" + request.url + ">\n";
    const bool kept = request.url.ends_with("/first") || request.url.ends_with("/second");
    EXPECT_TRUE(!kept || request.ended == Request::Ended::complete) << request.url;
  }
  for (std::size_t i = kFirstVisited; i < kTrades; ++i) {
    EXPECT_NE(asked_for.find("<" + PartnerSite::url_at(*server, i) + ">"), std::string::npos) << i;
  }
  EXPECT_EQ(asked_for.find("/early"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Each, HarvestMethods,
                         testing::Values(Method{"0", "sh", 80}, Method{"1", "wget", 0},
                                         Method{"2", "sh", 0}, Method{"3", "curl", 0}),
                         testing::PrintToStringParamName());

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

/// A partner whose page and pictures are all above the limit; a picture's last byte is read as
/// well.
Answer endless_partner(const std::string& url) {
  const std::string head = "HTTP/1.0 200 OK\r\n\r\n";
  if (url.ends_with("/")) {
    std::string page = head;
    for (int i = 0; i < 10; ++i) page += link_to("/1234" + std::to_string(i));
    return {Answer::How::send, page};
  }
  return {Answer::How::send, head + std::string(kReceiveLimitBytes - head.size(), 'x')};
}

// Each response above the limit holds a descriptor, ten for a trade: the harvest may run out of
// them, the pages behind it may not.
TEST(HarvestRun, PagesAreBuiltHoweverManyConnectionsAreHeldOpen) {
  const auto server = listen(2, 80, endless_partner);
  if (!server) GTEST_SKIP() << kNoPort80;
  const struct {
    const char* limit;
    std::size_t fewest_requests;
  } cases[] = {{"-n 16", 0}, {"-Sn 16", 22}};  // 16 for good: not all; 16 to begin with: all
  for (const auto& c : cases) {
    SCOPED_TRACE(c.limit);
    const HarvestSite site(Visits{{"a.e", "http://" + server->host(0) + "/"},
                                  {"b.e", "http://" + server->host(1) + "/"}});
    site.configure("0");
    site.add_trade({.id = 7, .domain = "c.e"});
    site.add_toplist("top", "%%tid_000%%\n");
    const std::size_t before = server->requests().size();
    const RunResult result = site.start({.limit = c.limit});
    EXPECT_EQ(result, RunResult{.out = result.out});  // a note for each
    EXPECT_EQ(site.read("top.html"), "7\n");
    EXPECT_EQ(site.log(), "");
    EXPECT_GE(server->requests().size() - before, c.fewest_requests);
  }
}

// A downloader that outlives a killed run must not hold the scheduler's lock, and without standard
// descriptors its messages would go into the files that it opens.
TEST(HarvestRun, CommandsHaveTheCallersLimitAndTheStandardDescriptorsOnly) {
  const HarvestSite site(Visits{{"a.e", "http://a.e/"}});
  site.remove("bin/fetch");
  site.add_stand_in("fetch-limits", "fetch");
  const std::string command = "ulimit -S -n 64; exec <&- >&- 2>&- 7>l/sys/a.lock 9>l/sys/b.lock; ";
  const RunResult result =
      site.start({.program = "/bin/sh",
                  .arguments = {"-c", command + TOPLIST_PROGRAM " run"},
                  .environment = {"PATH=" + site.path("bin") + ":/usr/bin:/bin"}});
  EXPECT_EQ(result, RunResult{});
  EXPECT_EQ(site.read("limits"), "64: 0 1 2");
}

TEST(HarvestThreads, LeaveTheLimitOfDescriptorsAsItWas) {
  rlimit before{}, after{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlim_t former = std::exchange(before.rlim_cur, before.rlim_max - 1);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  harvest_thumbnails({});
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &after), 0);
  EXPECT_EQ(after.rlim_cur, before.rlim_cur);
  before.rlim_cur = former;
  ::setrlimit(RLIMIT_NOFILE, &before);
}

TEST(HarvestWorker, WithoutAFetchMethodAsksNobody) {
  const auto server = listen(1, 80, partner_site);
  if (!server) GTEST_SKIP() << kNoPort80;
  const HarvestSite site(Visits{});
  site.write("d/tl/vantaig", "l/thumbs/\ntool -in\n");
  site.harvest_alone("http://" + server->host() + "/first");
  EXPECT_TRUE(server->requests().empty());
  EXPECT_EQ(site.read("fetch.log"), "");
}

}  // namespace
}  // namespace toplist::test
