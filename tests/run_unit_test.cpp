#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "run/sys_log.h"
#include "run/trade_record.h"
#include "run/trade_row.h"
#include "support/temp_dir.h"
#include "support/text_cases.h"

namespace toplist {
namespace {

using test::TempDir;

TEST(Percentage, IsTheTruncatedHundredfoldOfTheQuotient) {
  test::expect_cases("percentage", [](const std::string& both) {
    std::istringstream numbers(both);
    std::int32_t x = 0, y = 0;
    numbers >> x >> y;
    return std::to_string(percentage(x, y));
  });
}

// With 64 bits of significand the quotient first comes out one lower for just these.
TEST(Percentage, SomeExactOnesComeOutOneLower) {
  for (std::int32_t x = 0; x <= 200; ++x) {
    const bool lower = x == 53 || x == 59 || x == 105 || x == 106 || x == 117 || x == 118;
    EXPECT_EQ(percentage(x, 100), x - (lower ? 1 : 0));
    EXPECT_EQ(percentage(-x, 100), -x + (lower ? 1 : 0));
  }
}

TEST(TradeRecord, LoadsWholeRecordsAndACutOne) {
  const TempDir dir;
  TradeRecord stored;
  stored.trade_id = 7;
  stored.status = 1;
  std::strcpy(stored.domain, "a.com");
  std::strcpy(stored.url, "http://a.com/");
  std::string bytes;
  for (int i = 0; i < 11; ++i) bytes.append(reinterpret_cast<const char*>(&stored), sizeof stored);
  ASSERT_EQ(bytes.substr(80, 9), std::string("http://a."));
  const struct {
    std::size_t size, count;
    std::int32_t last_id, last_status;
    const char *last_domain, *last_url;
  } cases[] = {
      {9960, 10, 7, 1, "a.com", "http://a.com/"},
      {9961, 11, -249, 0, "", ""},  // 0xFFFFFF07
      {9960 + 4 + 3, 11, 7, 0, "a.c", ""},
      {9960 + 825, 11, 7, 1, "a.com", "http://a.com/"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.size);
    std::vector<TradeRecord> trades(3);
    ASSERT_TRUE(load_trades(dir.write("index", bytes.substr(0, c.size)), trades));
    ASSERT_EQ(trades.size(), c.count);
    const TradeRecord& last = trades.back();
    EXPECT_EQ(last.trade_id, c.last_id);
    EXPECT_EQ(last.status, c.last_status);
    EXPECT_EQ(domain_of(last), c.last_domain);
    EXPECT_EQ(url_of(last), c.last_url);
    EXPECT_EQ(last.reserved_828, 1);
  }
  std::vector<TradeRecord> trades;
  EXPECT_TRUE(load_trades(dir.write("empty", ""), trades));
  EXPECT_TRUE(load_trades(dir.path(), trades));
  EXPECT_TRUE(trades.empty());
  EXPECT_FALSE(load_trades(dir.path() + "/missing", trades));
}

TEST(TradeRecord, TextsEndAtTheFirstNulOrWithTheRecord) {
  TradeRecord record;
  std::memset(record.domain, 'd', sizeof record.domain);
  std::strcpy(record.url, "url");
  EXPECT_EQ(domain_of(record), std::string(76, 'd') + "url");
  std::memset(static_cast<void*>(&record), 'x', sizeof record);
  EXPECT_EQ(domain_of(record), std::string(992, 'x'));
  EXPECT_EQ(url_of(record), std::string(916, 'x'));
}

TEST(SysLog, EscapesWhatTheAdministrationPagesWouldRender) {
  test::expect_cases("sanitize_log_field", sanitize_log_field);
}

TEST(SysLog, WritesTheDirectoryErrorPage) {
  const std::string error =
      "<div align=center>\n<font style=\"font:normal 8pt arial;\";>"
      "<font style=\"color:red;\"><b>Error</b></font><br>\nUnable to open directory "
      "<b>a&b/</b><br>\n";
  const std::string end =
      "Please check file permissions and try again.<br>\n</font>\n</div>\n</body>\n</html>";
  const std::string header =
      "Content-type: text/html\r\n\r\n"
      "<html>\n<head>\n<title>Vanta Core</title>\n</head>\n<body bgcolor=white>\n";
  const struct {
    const char* link;
    int with_header;
    std::string page;
  } cases[] = {
      {"", 2, error + end},
      {"/x?a=1&b", 1, header + error + "<a href=\"/x?a=1&b\">/x?a=1&b</a><br>\n" + end},
  };
  for (const auto& c : cases) {
    testing::internal::CaptureStdout();
    write_dir_error_page("a&b/", c.link, c.with_header);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.page);
  }
}

}  // namespace
}  // namespace toplist
