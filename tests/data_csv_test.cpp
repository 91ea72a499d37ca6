// A site's data as CSV and back, in memory. That an export that is imported changes nothing, and
// holds what a run reads, the fuzz target "data" proves of files of all kinds.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "support/text_cases.h"
#include "toplistctl/lib/formats/figures_csv.h"
#include "toplistctl/lib/formats/site_writer.h"
#include "toplistctl/lib/formats/trades_csv.h"

namespace toplist::test {
namespace {

using namespace toplist::ctl;

/// Trades 1 to `count`, of domains "a", "b" and so on; every byte that nobody reads is set.
std::vector<TradeRecord> make_trades(std::int32_t count = 10) {
  std::vector<TradeRecord> trades(static_cast<std::size_t>(count));
  for (std::int32_t i = 0; i < count; ++i) {
    TradeRecord& trade = trades[static_cast<std::size_t>(i)];
    std::memset(static_cast<void*>(&trade), 0xA5, sizeof trade);
    trade.trade_id = i + 1;
    trade.status = i % 3;
    std::strcpy(trade.domain, std::string(1, static_cast<char>('a' + i)).c_str());
    std::strcpy(trade.url, "http://\xFF|;/");
  }
  return trades;
}

std::string bytes_of(const std::vector<TradeRecord>& trades) {
  return {reinterpret_cast<const char*>(trades.data()), trades.size() * sizeof(TradeRecord)};
}

std::string all_of(Diagnostics errors) {
  std::stable_sort(errors.begin(), errors.end(),
                   [](const auto& a, const auto& b) { return a.place < b.place; });
  std::string text;
  for (Diagnostic& error : errors) {
    error.place.file = "csv";
    text += error.place.prefix() + error.message + "\n";
  }
  return text;
}

std::string all_of(const std::vector<TradeChange>& changes) {
  std::string text;
  for (const TradeChange& change : changes) text += change.text();
  return text;
}

Histories no_histories() {
  return [](std::string_view) { return std::optional<PeriodBlock>(); };
}

// Texts that change leave the others alone; every error is told with its place.
TEST(DataCsv, TradesTakeTextsAlongOrTellWhatIsWrong) {
  for (TextCase& c : read_text_cases("trades_csv_cases.txt")) {
    SCOPED_TRACE(c.name);
    const auto trades = c.texts.contains("before") ? make_trades() : std::vector<TradeRecord>();
    Diagnostics errors;
    const std::string& options = c.texts["options"];
    const Markup markup = options == "raw\n"      ? Markup::raw
                          : options == "escape\n" ? Markup::escape
                                                  : Markup::refuse;
    const auto imported =
        import_trades(c.texts["csv"], trades, c.texts["before"], errors, {.markup = markup});
    EXPECT_EQ(all_of(errors), c.texts["errors"]);
    if (errors.empty()) {
      EXPECT_EQ(imported.columns, c.texts["after"]);
    }
  }
}

// Only what a line names changes; other trades stay, or go on request.
TEST(DataCsv, ARecordKeepsItsPlaceAndWhatTheCsvDoesNotChange) {
  std::vector<TradeRecord> before = make_trades();
  std::string expected = bytes_of(before);
  expected[824] = 7;                                                          // status of trade 1
  expected.replace(996 + 4, 76, std::string("new") + std::string(73, '\0'));  // domain of trade 2
  expected += bytes_of({make_trade(30, "n", "u", 1)});
  const std::string csv =
      "status,domain,id,url\n1,n,30,u\n7,a,1,http://\xFF|;/\n1,new,2,http://\xFF|;/\n";
  Diagnostics errors;
  ImportedTrades imported = import_trades(csv, before, "", errors);
  EXPECT_EQ(bytes_of(imported.trades), expected);
  EXPECT_EQ(all_of(imported.changes),
            "30 n: added\n1 a: status 0 -> 7\n2 b: domain \"b\" -> \"new\"\n");
  EXPECT_EQ(imported.unchanged, 8U);

  // Records of no trade go when they are not needed, and come when they are.
  before.push_back({.trade_id = -1});
  before[2].trade_id = -3;
  imported = import_trades("id\n2\n-3\n", before, "", errors, {.remove_missing = true});
  EXPECT_EQ(all_of(errors), "");
  EXPECT_EQ(all_of(imported.changes),
            "1 a: removed\n4 d: removed\n5 e: removed\n6 f: removed\n"
            "7 g: removed\n8 h: removed\n9 i: removed\n10 j: removed\n");
  ASSERT_EQ(imported.trades.size(), 10U);
  EXPECT_EQ(bytes_of({imported.trades[2]}), bytes_of({TradeRecord{.trade_id = -1}}));
  EXPECT_EQ(imported.trades[4].trade_id, -4);
  EXPECT_EQ(imported.fillers, 8U);
  EXPECT_EQ(imported.unchanged, 2U);
}

/// A record of "d/t/sum" whose 42 figures count from `first`; `changes` are other texts for some.
std::string record(const std::string& id, int first,
                   const std::map<int, const char*>& changes = {}) {
  std::string text = "sum|" + id + "|";
  for (int i = 0; i < 42; ++i) {
    const auto change = changes.find(i);
    text += (change == changes.end() ? std::to_string(first + i) : change->second) + "|";
  }
  return text + "\n";
}

/// Fields behind the id: cef is the seventh of a period, further3 the last.
constexpr int kCef24 = 14 + 6, kFurther24 = 14 + 13;

std::string import_sum(const std::string& csv, const std::string& before) {
  Diagnostics errors;
  const auto imported = import_figures(csv, make_trades(), before, no_histories(), errors);
  return errors.empty() ? imported->sum : all_of(errors);
}

TEST(DataCsv, FiguresThatChangeLeaveTheOthersAlone) {
  const std::string before = record("1", 100) + record("99", 5) + record("2", 200);
  const std::string csv = "id,further3,period,cef\n1,-1,24,5\n3,0,24,8\n";
  // A period that has a line is 0 for trades without one; the new record follows the others.
  EXPECT_EQ(import_sum(csv, before),
            record("1", 100, {{kCef24, "5"}, {kFurther24, "-1"}}) + record("99", 5) +
                record("2", 200, {{kCef24, "0"}, {kFurther24, "0"}}) +
                std::string("sum|3|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|8|0|0|0|0|0|0|0|") +
                "0|0|0|0|0|0|0|0|0|0|0|0|0|0|\n");
  // A cut record is only completed when that is needed.
  const std::string cut = "sum|1|1|2|";
  EXPECT_EQ(import_sum("id,period,rin\n1,60,1\n2,60,0\n", record("2", 0) + cut),
            record("2", 0) + cut);
  const std::string completed = import_sum("id,period,rin\n1,7,9\n2,07,28\n", record("2", 0) + cut);
  EXPECT_TRUE(completed.starts_with(record("2", 0) + cut + "0|0|0|")) << completed;
  EXPECT_TRUE(completed.ends_with("|9|0|0|0|0|0|0|0|0|0|0|0|0|0|\n")) << completed;
}

TEST(DataCsv, OnlyHistoriesWithOtherTotalsAreWritten) {
  PeriodBlock totals;
  totals.rin = 5;
  totals.rec = 6;
  const Histories histories = [&totals](std::string_view domain) -> std::optional<PeriodBlock> {
    if (domain != "a" && domain != "b") return std::nullopt;
    return totals;
  };
  std::vector<TradeRecord> trades = make_trades();
  trades[9].domain[0] = 'a';
  EXPECT_EQ(*export_figures(make_trades(3), "", histories),
            "id,period,rin,uin,out,clk,cef,ctt,ctg,rec,further1,further2,further3\r\n"
            "1,99,5,0,0,0,0,0,0,6,0,0,0\r\n2,99,5,0,0,0,0,0,0,6,0,0,0\r\n");
  Diagnostics errors;
  const auto imported = import_figures("id,period,rin\n1,99,5\n2,99,7\n3,99,0\n10,99,5\n", trades,
                                       "", histories, errors);
  EXPECT_EQ(all_of(errors), "");
  ASSERT_EQ(imported->histories.size(), 2U);
  EXPECT_EQ(imported->histories[0].first, "b");
  EXPECT_EQ(imported->histories[0].second.rin, 7);
  EXPECT_EQ(imported->histories[0].second.rec, 6);
  EXPECT_EQ(imported->histories[1].first, "c");
  EXPECT_EQ(all_of(imported->changes), "2 b: rin99 5 -> 7\n");
}

TEST(DataCsv, EveryErrorInFiguresIsReportedWithItsPlace) {
  std::vector<TradeRecord> trades = make_trades(3);
  trades[1].domain[0] = 'a';
  std::strcpy(trades[2].domain, "x/y");
  Diagnostics errors;
  const auto imported = import_figures(
      "id,period,rin,further1\n4,60,1,1\n1,61,1,1\n1,60,1,\n1,60,1,1\n1,99,1,1\n2,99,2,0\n3,99,1,"
      "0\n",
      trades, "", no_histories(), errors);
  EXPECT_TRUE(imported.has_value());
  EXPECT_EQ(
      all_of(errors),
      "csv:2:1: column id: the site has no trade with this id\n"
      "csv:3:2: column period: this must be 60, 24, 07 or 99\n"
      "csv:4:4: column further1: this must be a whole number\n"
      "csv:5:1: column id: line 4 has the same id and period\n"
      "csv:6:4: column further1: this must be 0 in period 99\n"
      "csv:7:1: column id: line 6 has the same domain and other figures. Trades of one domain "
      "share their history\n"
      "csv:8:1: column id: the domain of this trade contains a \"/\", so it cannot name a "
      "history\n");
}

}  // namespace
}  // namespace toplist::test
