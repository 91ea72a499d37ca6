// Rendering and ranking against the least that any program would do for the same.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "render/render.h"
#include "support/rows.h"
#include "table.h"
#include "toplist/ranking.h"
#include "toplistctl/lib/templates/source.h"

namespace {

using toplist::TradeRow;
using toplist::test::pointers_to;

constexpr std::size_t kRankedRows = 100'000;
constexpr std::size_t kTemplateBytes = 1024UL * 1024;

std::vector<TradeRow> random_rows(std::size_t count) {
  std::mt19937 random(1);
  std::vector<TradeRow> rows(count);
  for (std::size_t i = 0; i < count; ++i) {
    rows[i].id = std::to_string(i);
    rows[i].domain = "partner-" + rows[i].id + ".example";
    for (auto& block : rows[i].periods) {
      for (const auto counter : toplist::kFileOrder) {
        block.*counter = static_cast<std::int32_t>(random() % 1'000'000);
      }
      for (auto& further : block.further) further = static_cast<std::int32_t>(random() % 1'000'000);
    }
  }
  return rows;
}

/// A mebibyte of tags with text between them, on lines that end behind every `tags_a_line` tags.
std::string make_template(std::size_t tags_a_line) {
  constexpr std::array<const char*, 3> kTags{"%%rin24_0", "%%out07_0", "%%dom_0"};
  std::string text;
  for (std::size_t i = 0; text.size() < kTemplateBytes; ++i) {
    text += "<td>";
    text += kTags[i % kTags.size()];
    text += std::to_string(10 + i % 90) + "%%</td>";
    if (i % tags_a_line == tags_a_line - 1) text += '\n';
  }
  return text;
}

void render(benchmark::State& state, std::size_t tags_a_line) {
  std::vector<TradeRow> rows = random_rows(100);
  const auto ranked = pointers_to<const TradeRow>(rows);
  const std::string text = make_template(tags_a_line);
  std::size_t bytes = 0;
  for (auto _ : state) {
    const std::string page = toplist::render_template("", text, ranked);
    bytes += page.size();
    benchmark::DoNotOptimize(page.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

/// A repeat of all ranks that gives a mebibyte.
void expand(benchmark::State& state) {
  std::string source = "<!-- repeat 0-999 -->\n";
  while (source.size() < kTemplateBytes / 1000) {
    source += "<li>{place}: <a href=\"%%url_NNN%%\">%%tit_NNN%%</a> %%rin24_NNN%%</li>\n";
  }
  source += "<!-- end repeat -->\n";
  for (auto _ : state) {
    const auto expansion = toplist::ctl::expand_source(
        "", [&source](const auto&) { return toplist::ctl::Expected<std::string>(source); });
    benchmark::DoNotOptimize(expansion.text.data());
  }
}

void copy(benchmark::State& state) {
  const std::string text = make_template(1);
  for (auto _ : state) {
    std::string page;
    page += text;
    benchmark::DoNotOptimize(page.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) *
                          static_cast<std::int64_t>(state.iterations()));
}

void rank(benchmark::State& state, const std::string& order_by) {
  std::vector<TradeRow> rows = random_rows(kRankedRows);
  const auto unranked = pointers_to<TradeRow>(rows);
  for (auto _ : state) {
    auto ranking = unranked;
    toplist::rank_rows(rows, order_by, ranking);
    benchmark::DoNotOptimize(ranking.data());
  }
}

void sort_integers(benchmark::State& state) {
  std::mt19937 random(1);
  std::vector<std::int32_t> unsorted(kRankedRows);
  for (auto& value : unsorted) value = static_cast<std::int32_t>(random() % 1'000'000);
  for (auto _ : state) {
    auto values = unsorted;
    std::sort(values.begin(), values.end());
    benchmark::DoNotOptimize(values.data());
  }
}

/// Keeps the median of each benchmark's repetitions.
class Medians : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.aggregate_name != "median") continue;
      seconds_[run.run_name.function_name] =
          run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
    }
  }

  void add_to(toplist::bench::Table& table, const std::string& what, const std::string& against,
              double limit) const {
    table.add_times(what + " / " + against, seconds_.at(what), seconds_.at(against), limit);
  }

 private:
  std::map<std::string, double> seconds_;
};

/// One order-by value of each kind of key.
const std::map<std::string, std::string> kKeys{{"rank by a counter", "16"},
                                               {"rank by a ratio", "23"},
                                               {"rank by a further value", "43"},
                                               {"rank by the ascending ratio", "57"}};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RegisterBenchmark("one line of a MiB", render, kTemplateBytes);
  benchmark::RegisterBenchmark("short lines", render, std::size_t{5});
  benchmark::RegisterBenchmark("expanding a source", expand);
  benchmark::RegisterBenchmark("a plain copy", copy);
  benchmark::RegisterBenchmark("std::sort of integers", sort_integers);
  for (const auto& [name, order_by] : kKeys) {
    benchmark::RegisterBenchmark(name.c_str(), rank, order_by);
  }
  Medians medians;
  benchmark::RunSpecifiedBenchmarks(&medians);

  toplist::bench::Table table("rendering a MiB of tags; ranking 100,000 rows");
  medians.add_to(table, "one line of a MiB", "short lines", 1.5);
  medians.add_to(table, "short lines", "a plain copy", 0);
  medians.add_to(table, "expanding a source", "a plain copy", 30);
  for (const auto& [name, order_by] : kKeys) {
    medians.add_to(table, name, "std::sort of integers", 3);
  }
  return table.status();
}
