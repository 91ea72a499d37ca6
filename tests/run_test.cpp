// Whole runs of the built program in a temporary site.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/site.h"

namespace toplist::test {
namespace {

constexpr int kTiedRanks = 42;  // two more than there are trades

/// A template that lists the ids of all ranks, and its page.
std::string ids_template() {
  std::string text;
  for (int rank = 0; rank < kTiedRanks; ++rank)
    text += "%%tid_0" + std::to_string(rank / 10) + std::to_string(rank % 10) + "%%\n";
  return text;
}

std::string ids_page(const std::vector<int>& ids) {
  std::string page;
  for (const int id : ids) page += std::to_string(id) + "\n";
  for (std::size_t rank = ids.size(); rank < kTiedRanks; ++rank) page += " \n";
  return page;
}

/// Runs the session that is called as the test is.
void expect_own_session() {
  expect_sessions("run_sessions.txt",
                  testing::UnitTest::GetInstance()->current_test_info()->name());
}

/// Forty active trades with few different keys, a switched off one among them.
std::vector<Trade> tied_trades() {
  std::vector<Trade> trades(41);
  for (std::int32_t i = 0; i < 41; ++i) {
    Trade& trade = trades[static_cast<std::size_t>(i)];
    trade.id = 7 * i - 20;
    trade.domain = "tied" + std::to_string(i) + ".example";
    trade.periods[kPeriod60].uin = i % 4;
    trade.periods[kPeriod60].clk = i * 7 % 10;
    trade.periods[kPeriod99].out = i % 3;
    trade.periods[kPeriod99].rin = i % 5;
    trade.status = i == 17 ? 2 : 1;
  }
  return trades;
}

std::int32_t uin60(const Trade& trade) { return trade.periods[kPeriod60].uin; }

std::int32_t clk60(const Trade& trade) { return trade.periods[kPeriod60].clk; }

/// Less is ahead: so the sign.
std::int32_t ratio99(const Trade& trade) {
  const PeriodBlock& block = trade.periods[kPeriod99];
  return block.rin == 0 ? 0 : -(100 * block.out / block.rin);
}

/// Sorts as a toplist does: trades with more are ahead. Returns the toplist's page.
std::string rank_by(std::int32_t (&figure)(const Trade&), std::vector<Trade>& trades) {
  std::sort(trades.begin(), trades.end(),
            [&figure](const Trade& a, const Trade& b) { return figure(a) > figure(b); });
  std::vector<int> ids(trades.size());
  std::transform(trades.begin(), trades.end(), ids.begin(), [](const Trade& t) { return t.id; });
  return ids_page(ids);
}

// Equal keys come out as std::sort leaves them, each sort starting from the order of the one
// before; a toplist that is not built sorts nothing.
TEST(Run, RanksEachToplistFromTheOrderOfTheOneBuiltBefore) {
  std::vector<Trade> order = tied_trades();
  const Site site(order);
  site.add_toplist("visitors", ids_template(), "2");
  site.add_toplist("edited", ids_template(), "4");
  site.write("d/tl/edited.tpl", "changed since its check value was stored");
  site.add_toplist("ratio", ids_template(), "57");

  std::erase_if(order, [](const Trade& trade) { return trade.status != 1; });
  const std::string visitors = rank_by(uin60, order);
  std::vector<Trade> sorted_by_the_edited_too = order;
  const std::string ratio = rank_by(ratio99, order);
  rank_by(clk60, sorted_by_the_edited_too);
  ASSERT_NE(rank_by(ratio99, sorted_by_the_edited_too), ratio) << "the trades show no difference";

  for (const char* run : {"first run", "second run"}) {
    SCOPED_TRACE(run);
    EXPECT_EQ(site.run(), RunResult{});
    EXPECT_EQ(site.log(), "");
    EXPECT_EQ(site.read("visitors.html"), visitors);
    EXPECT_EQ(site.read("ratio.html"), ratio);
    EXPECT_FALSE(site.contents().contains("edited.html"));
  }
}

// What a run prints, logs and writes in these cases is in data/run_sessions.txt.
TEST(Run, ShowsTheTextsOfATradeAndOneAlternativeOfAColumn) { expect_own_session(); }
TEST(Run, OnlyTheOneArgumentRunDoesAnything) { expect_own_session(); }
TEST(Run, FailureThatEndsItLeavesThePagesAsTheyWere) { expect_own_session(); }
TEST(Run, EndsWithoutALogLineWhenNoTradeIsActive) { expect_own_session(); }
TEST(Run, TenRecordsAreEnoughAndTheLastMayBeCutShort) { expect_own_session(); }
TEST(Run, LogsInLocalTimeAndGoesOnWithoutHistories) { expect_own_session(); }
TEST(Run, UnopenedTemplateOrOutputStopsTheToplistsBehindIt) { expect_own_session(); }
TEST(Run, StrayMarkStopsItAbnormally) { expect_own_session(); }
TEST(Run, ThumbnailsAreRequiredWhenTheSixthLineIsZeroOrMissing) { expect_own_session(); }
TEST(Run, SettingsDecideWhichTradesAToplistShows) { expect_own_session(); }
TEST(Run, SaysWhatItHasToSayOnStandardDescriptorsOnly) { expect_own_session(); }
TEST(Run, LosesItsLogLinesWithoutALogFolder) { expect_own_session(); }

}  // namespace
}  // namespace toplist::test
