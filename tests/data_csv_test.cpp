// A site's data as CSV and back, in memory.

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "run/statistics.h"
#include "toplistctl/data/figures_csv.h"
#include "toplistctl/data/site_writer.h"
#include "toplistctl/data/trades_csv.h"

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

std::string all_of(const CsvErrors& errors) {
  std::string text;
  for (const std::string& error : errors.told()) text += error + "\n";
  return text;
}

Histories no_histories() {
  return [](std::string_view) { return std::optional<PeriodBlock>(); };
}

const char* const kColumnTexts[] = {
    "",
    "no line break|a|",
    "short|header|\nline|a|x|",
    "line|domain|title|\nline|a|A|\nline|b|B|\n",
    "line|domain|title|\r\nline|a| A, \"quoted\"|\r\n\n|zz|Z|\r\n",  // a trade that is not there
    "line|domain|title|more|\nline|a|A|1|\nline|b|B|1|\nline|a|A2|2|\n",  // a domain twice
    "line|domain|title|more|\nline|a|A|\nbreak|1|\nline|b|B|1",           // a break within a line
    "line|domain|title|more|\na|A|1|b|B;B2;|2|\nline|c|C|",               // no breaks; a cut line
    "line|domain|title|\nline|a|\xFF\r\x01|\n",
};

TEST(DataCsv, ImportedTradesAreThoseThatWereExported) {
  for (const std::string columns : kColumnTexts) {
    const std::vector<TradeRecord> trades = make_trades();
    const std::string csv = export_trades(trades, columns);
    CsvErrors errors;
    const ImportedTrades same = import_trades(csv, trades, columns, errors);
    EXPECT_EQ(all_of(errors), "") << columns;
    EXPECT_EQ(bytes_of(same.trades), bytes_of(trades)) << columns;
    if (!columns.empty()) {
      EXPECT_EQ(same.columns, columns);
    }
  }
  for (const std::string columns : kColumnTexts) {
    std::vector<TradeRecord> trades = make_trades();
    for (TradeRecord& trade : trades) std::strcpy(trade.url, "http://a/");  // "|" only stays
    const std::string csv = export_trades(trades, columns);
    CsvErrors errors;
    const ImportedTrades copy = import_trades(csv, {}, "", errors);
    EXPECT_EQ(all_of(errors), "") << columns;
    const std::string again = export_trades(copy.trades, copy.columns);
    // A site without any column gets the usual three.
    if (!csv.starts_with("id,domain,url,status\r\n")) {
      EXPECT_EQ(again, csv) << columns;
    }
    EXPECT_EQ(export_trades(import_trades(again, {}, "", errors).trades, copy.columns), again);
  }
}

struct TextsCase {
  const char* before;
  const char* csv;
  const char* after;
};
constexpr TextsCase kTexts[] = {
    // Other lines, the unread field and the names in the header stay.
    {"x|y|Name|\nq|a|A|\nr|z|Z|\n", "id,title\n1,new\n", "x|y|Name|\nq|a|new|\nr|z|Z|\n"},
    // A further column; a column that the CSV does not have.
    {"x|y|Name|\r\nq|a|A|\r\nr|z|Z|\r\n", "id,picture\n1,p.jpg\n",
     "x|y|Name|description|picture|\r\nq|a|A||p.jpg|\r\nr|z|Z|||\r\n"},
    // New lines are for those who have a text; the last one was not ended.
    {"x|y|Name|\nq|a|A", "id,domain,title\n1,a,A\n2,b,B\n3,c,\n", "x|y|Name|\nq|a|A|\nline|b|B|\n"},
    // A new domain takes the texts along, but for those given.
    {"x|y|N|D|\nq|a|A|1|\n", "id,domain,description\n1,new,2\n",
     "x|y|N|D|\nq|a|A|1|\nline|new|A|2|\n"},
    // Lines of one domain become one.
    {"x|y|N|\nq|a|A|\nr|a|A2|\nr|b|B|\n", "id,title\n2,new\n",
     "x|y|N|description|\nq|a|A|A2|\nr|b|new||\n"},
    {"", "id\n1\n", "line|domain|title|description|picture|\n"},
};

TEST(DataCsv, TextsThatChangeLeaveTheOthersAlone) {
  for (const TextsCase& c : kTexts) {
    CsvErrors errors;
    EXPECT_EQ(import_trades(c.csv, make_trades(), c.before, errors).columns, c.after) << c.csv;
    EXPECT_EQ(all_of(errors), "") << c.csv;
  }
}

TEST(DataCsv, ARecordKeepsWhatTheCsvDoesNotChange) {
  const std::vector<TradeRecord> before = make_trades();
  std::string expected = bytes_of(before);
  expected[824] = 7;                                                          // status of trade 1
  expected.replace(996 + 4, 76, std::string("new") + std::string(73, '\0'));  // domain of trade 2
  CsvErrors errors;
  std::string csv = "status,domain,id\n7,a,1\n1,new,2\n";
  for (std::int32_t i = 3; i <= 10; ++i) {
    const TradeRecord& trade = before[static_cast<std::size_t>(i - 1)];
    csv += std::to_string(trade.status) + "," + trade.domain + "," + std::to_string(i) + "\n";
  }
  EXPECT_EQ(bytes_of(import_trades(csv, before, "", errors).trades), expected);
  EXPECT_EQ(all_of(errors), "");

  // The order is that of the lines; others are gone, and a new record has its defaults.
  const ImportedTrades imported =
      import_trades("id,domain,url,status\n30,new,u,1\n3,c,u,2\n-2,,,0\n", before, "", errors);
  ASSERT_EQ(imported.trades.size(), 10U);
  EXPECT_EQ(bytes_of({imported.trades[0]}), bytes_of({site::make_trade(30, "new", "u", 1)}));
  EXPECT_EQ(imported.trades[1].reserved_820, before[2].reserved_820);
  EXPECT_EQ(bytes_of({imported.trades[3]}), bytes_of({TradeRecord{.trade_id = -1}}));
  EXPECT_EQ(imported.trades[4].trade_id, -3);
  EXPECT_EQ(imported.added, 2U);
  EXPECT_EQ(imported.removed, 9U);
  EXPECT_EQ(imported.fillers, 7U);
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
constexpr int kCef60 = 6, kCef24 = 14 + 6, kFurther24 = 14 + 13, kRin07 = 28;

std::string import_sum(const std::string& csv, const std::string& before) {
  CsvErrors errors;
  const ImportedFigures imported =
      import_figures(csv, make_trades(), before, no_histories(), errors);
  return errors.empty() ? imported.sum : all_of(errors);
}

TEST(DataCsv, ImportedFiguresAreThoseThatWereExported) {
  const std::string regular = record("1", 100) + record("2", -5) + record("10", 7);
  const std::string texts[] = {
      "",
      regular,
      regular.substr(0, regular.size() - 2),   // the last field is not ended
      regular.substr(0, regular.size() - 80),  // a cut record
      record("1", 1, {{kCef60, " +7x"}, {kCef24, ""}, {kRin07, "99999999999"}}),
      "\r\n" + record("01", 1) + record("99", 2) + record("3", 3, {{10, "unread"}}),
      record("1", 1) + record("1", 2),
  };
  for (const std::string& text : texts) {
    const std::string csv = export_figures(make_trades(), text, no_histories());
    EXPECT_EQ(import_sum(csv, text), text);
    EXPECT_EQ(export_figures(make_trades(), import_sum(csv, ""), no_histories()), csv) << text;
  }
}

TEST(DataCsv, AnExportHoldsWhatARunReads) {
  std::vector<TradeRecord> trades = make_trades(3);
  for (TradeRecord& trade : trades) trade.status = 1;
  const std::string sum = record("1", 1) + record("3", 2) + record("3", 50).substr(0, 60);
  std::vector<TradeRow> rows = build_rows(trades);
  read_recent_periods(sum, rows);
  const std::string csv = export_figures(trades, sum, no_histories());
  for (const TradeRow& row : rows) {
    const PeriodBlock& block = row.periods[kPeriod24];
    std::string line = row.id + ",24";
    for (const std::int32_t figure :
         {block.rin, block.uin, block.out, block.clk, block.cef, block.ctt, block.ctg, block.rec,
          block.further[0], block.further[1], block.further[2]}) {
      line += "," + std::to_string(figure);
    }
    EXPECT_EQ(csv.find(line + "\r\n") != std::string::npos, row.id != "2") << line << "\n" << csv;
  }
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
  const Histories histories = [&totals](std::string_view domain) {
    return domain == "a" || domain == "b" ? std::optional(totals) : std::nullopt;
  };
  std::vector<TradeRecord> trades = make_trades();
  trades[9].domain[0] = 'a';
  EXPECT_EQ(export_figures(make_trades(3), "", histories),
            "id,period,rin,uin,out,clk,cef,ctt,ctg,rec,further1,further2,further3\r\n"
            "1,99,5,0,0,0,0,0,0,6,0,0,0\r\n2,99,5,0,0,0,0,0,0,6,0,0,0\r\n");
  CsvErrors errors;
  const auto imported = import_figures("id,period,rin\n1,99,5\n2,99,7\n3,99,0\n10,99,5\n", trades,
                                       "", histories, errors);
  EXPECT_EQ(all_of(errors), "");
  ASSERT_EQ(imported.histories.size(), 2U);
  EXPECT_EQ(imported.histories[0].first, "b");
  EXPECT_EQ(imported.histories[0].second.rin, 7);
  EXPECT_EQ(imported.histories[0].second.rec, 6);
  EXPECT_EQ(imported.histories[1].first, "c");
}

struct ErrorCase {
  std::string csv;
  const char* told;
};

TEST(DataCsv, EveryErrorInTradesIsToldWithItsPlace) {
  const ErrorCase cases[] = {
      {"",
       "line 1: there is nothing here: the first line must name the columns\n"
       "line 1: the column \"id\" is missing\n"},
      {"\n\ndomain,Title,domain\n",
       "line 3: the column \"id\" is missing\n"
       "line 3, column 2 (Title): no column of this name is known\n"
       "line 3, column 3 (domain): this column is there twice\n"},
      {"id,title,url,domain\n1,x|y,\"two\nlines\"," + std::string(76, 'd') + "\n",
       "line 2, column 2 (title): must not hold a \"|\", which separates fields\n"
       "line 2, column 3 (url): must not hold a line break\n"
       "line 3, column 4 (domain): is longer than 75 bytes\n"},
      {"id,domain,url\n\n1,../x,a|b\n2," + std::string("a\0b", 3) + ",\n",
       "line 3, column 2 (domain): must not hold a \"/\", as it names files\n"
       "line 3, column 3 (url): must not hold a \"|\", which separates fields\n"
       "line 4, column 2 (domain): must not hold a NUL byte\n"},
      {"id,status\n2147483648,1\n1, 1\n3,-2147483649\nx,\n1,0\n",
       "line 2, column 1 (id): a number beyond 32 bits\n"
       "line 3, column 2 (status): a whole number must stand here\n"
       "line 4, column 2 (status): a number beyond 32 bits\n"
       "line 5, column 1 (id): a whole number must stand here\n"
       "line 6, column 1 (id): is that of line 3\n"},
      {"id,domain,title,status\r\n1,x,X,1\r\n2,x,Y,1\r\n3,,,1\r\n",
       "line 3, column 2 (domain): is that of line 2, where the texts differ: they go by the "
       "domain\n"
       "line 4, column 2 (domain): an active trade needs a domain\n"},
      {"id,status\n1\n2,0\n3,1,1\n",
       "line 2: the number of cells is 1, in the header 2\n"
       "line 4: the number of cells is 3, in the header 2\n"},
      {"id,title\n1,\"a\" b\n2,c\n",
       "line 2, column 2: a quote is out of place: a cell that holds one must be quoted as a "
       "whole, "
       "and the quotes in it doubled\n"},
      {"id,title\n1,\"a\n\n2,b\n",
       "line 2, column 2: the quote that begins this cell is never closed\n"},
  };
  for (const ErrorCase& c : cases) {
    CsvErrors errors;
    import_trades(c.csv, {}, "", errors);
    EXPECT_EQ(all_of(errors), c.told) << c.csv;
  }
}

TEST(DataCsv, EveryErrorInFiguresIsToldWithItsPlace) {
  std::vector<TradeRecord> trades = make_trades(3);
  trades[1].domain[0] = 'a';
  std::strcpy(trades[2].domain, "x/y");
  CsvErrors errors;
  import_figures(
      "id,period,rin,further1\n4,60,1,1\n1,61,1,1\n1,60,1,\n1,60,1,1\n1,99,1,1\n2,99,2,0\n3,99,1,"
      "0\n",
      trades, "", no_histories(), errors);
  EXPECT_EQ(all_of(errors),
            "line 2, column 1 (id): the trade database has no trade of this id\n"
            "line 3, column 2 (period): 60, 24, 07 or 99 must stand here\n"
            "line 4, column 4 (further1): a whole number must stand here\n"
            "line 5, column 1 (id): has the same period in line 4\n"
            "line 6, column 4 (further1): must be 0 in period 99\n"
            "line 7, column 1 (id): has the domain of line 6, where the figures differ: a history "
            "goes by the domain\n"
            "line 8, column 1 (id): has a \"/\" in its domain, which names a file\n");
}

TEST(DataCsv, ErrorsAreCountedBeyondThoseTold) {
  std::string csv = "id\n";
  for (int i = 0; i < 1000; ++i) csv += "x\n";
  CsvErrors errors;
  import_trades(csv, {}, "", errors);
  EXPECT_EQ(errors.count(), 1000U);
  EXPECT_EQ(errors.told().size(), CsvErrors::kMostTold);
}

}  // namespace
}  // namespace toplist::test
