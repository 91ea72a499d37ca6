#include <fmt/core.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <numbers>
#include <optional>
#include <string>

#include "run/statistics.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/formats/figures_csv.h"
#include "toplistctl/lib/formats/site_writer.h"
#include "toplistctl/lib/formats/trades_csv.h"
#include "toplistctl/lib/history/history.h"
#include "toplistctl/lib/new_site/new_site.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

/// Does the same as the commands import trades and import figures.
Expected<NewSite> import_data(NewSite site) {
  Diagnostics errors;
  const ImportedTrades trades =
      import_trades(content("trades.csv"), {}, site.files[kExtraColumnsPath], errors);
  const auto no_history = [](std::string_view) { return std::optional<PeriodBlock>(); };
  const auto figures = import_figures(content("figures.csv"), trades.trades, site.files[kSumPath],
                                      no_history, errors);
  if (!errors.empty()) return failure(errors.front().message);
  for (const TradeRecord& trade : trades.trades) append_trade(site.files[kTradesPath], trade);
  site.files[kExtraColumnsPath] = trades.columns;
  site.files[kSumPath] = figures->sum;
  for (const auto& [domain, totals] : figures->histories) {
    append_history(site.files[history_path(domain)], 1, totals);
  }
  return site;
}

/// A trade's figures so many hours ago, invented from those of now. Traffic has its time of day and
/// its weekend, and goes up or down with the weeks, for each trade in its own way.
TradeRow figures_ago(TradeRow row, int hours) {
  const int id = parse_int32(row.id);
  const double days = hours / 24.0;
  const double weeks = 1 - (id * 37 % 21 - 9) * days / 600;
  const double noise = 1 + 0.06 * std::sin(id * 7.0 + hours * 1.7) + 0.03 * std::sin(hours * 2.3);
  const double weekend = 1 + 0.12 * (std::cos(days * 2 * std::numbers::pi / 7) - 1);
  const double time_of_day = 1 + 0.55 * std::sin(days * 2 * std::numbers::pi);
  const double sent = 0.9 + 0.1 * std::cos(days * 0.9);
  const std::array<double, kPeriodCount> parts{weeks * noise * weekend * time_of_day,
                                               weeks * noise * weekend, weeks, 1 - days / 1500};
  for (std::size_t period = 0; period < kPeriodCount; ++period) {
    for (const CounterEntry& counter : kCounters) {
      std::int32_t& figure = row.periods[period].*counter.member;
      const double part =
          counter.member == &PeriodBlock::out ? parts[period] * sent : parts[period];
      figure = static_cast<std::int32_t>(figure * part);
    }
  }
  return row;
}

/// What "record" would have recorded in 30 days: each hour of the last two days, of which some are
/// missing, and each day before. A trade in nineteen has come within the last four days.
Expected<void> record_past(const std::string& path, const std::vector<TradeRow>& rows) {
  constexpr int kHours = 48, kDays = 30, kNewDays = 4;
  std::vector<int> ages;  // in hours, the oldest first
  for (int day = kDays - 1; day >= kHours / 24; --day) ages.push_back(24 * day);
  for (int hour = kHours - 1; hour > 0; --hour) {
    if (hour < 29 || hour > 31) ages.push_back(hour);
  }
  const std::int64_t now = std::time(nullptr);
  std::vector<std::vector<TradeRow>> figures;
  std::vector<Moment> moments;
  for (const int age : ages) {
    figures.emplace_back();
    for (const TradeRow& row : rows) {
      if (parse_int32(row.id) % 19 != 0 || age < kNewDays * 24) {
        figures.back().push_back(figures_ago(row, age));
      }
    }
  }
  for (std::size_t i = 0; i < ages.size(); ++i) {
    moments.push_back({now - ages[i] * kSecondsPerHour, figures[i]});
  }
  return record_snapshots(path, moments);
}

/// The history comes from a database in a folder for temporary files.
Expected<NewSite> add_history(NewSite site) {
  std::vector<TradeRow> rows = build_rows(parse_trades(site.files[kTradesPath]));
  for (TradeRow& row : rows) {
    toplist::add_history(site.files[history_path(row.domain)], row.periods[kPeriod99]);
  }
  read_recent_periods(site.files[kSumPath], rows);

  std::string folder = std::filesystem::temp_directory_path() / "toplistctl-XXXXXX";
  if (::mkdtemp(folder.data()) == nullptr) return system_error("cannot create", folder, errno);
  const std::string path = folder + "/history";
  const auto bytes = record_past(path, rows).and_then([&] { return read_file(path); });
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  if (!bytes) return failure("no site was created: " + bytes.error().text());
  site.files[kHistoryPath] = *bytes;
  return site;
}

/// Fills an empty site as a user would: own pages, then trades and figures from CSV files.
Expected<NewSite> sample_site() {
  return empty_site()
      .and_then([](NewSite site) {
        add_content(site, "sample");
        return install_templates(site).map([&site] { return std::move(site); });
      })
      .and_then(import_data)
      .and_then(add_history);
}

}  // namespace

void add_sample_command(const Command& program) {
  const auto directory = std::make_shared<std::string>();
  const Command command = program.add_command("sample", "Create a site with invented trades");
  command.footer("Example:\n  toplistctl sample /tmp/mysite");
  command.text("directory", "DIR", *directory, "New or empty").required();
  command.run([directory] {
    return sample_site()
        .and_then([&](const NewSite& site) { return create_site(*directory, site); })
        .map([&] {
          return print(fmt::format("{}: created a site with invented trades\n", *directory));
        });
  });
}

}  // namespace toplist::ctl
