#include <fmt/core.h>

#include <memory>
#include <optional>
#include <string>

#include "run/statistics.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/formats/figures_csv.h"
#include "toplistctl/lib/formats/site_writer.h"
#include "toplistctl/lib/formats/trades_csv.h"
#include "toplistctl/lib/new_site/new_site.h"
#include "toplistctl/lib/output/console.h"

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

/// Fills an empty site as a user would: own pages, then trades and figures from CSV files.
Expected<NewSite> sample_site() {
  return empty_site()
      .and_then([](NewSite site) {
        add_content(site, "sample");
        return install_templates(site).map([&site] { return std::move(site); });
      })
      .and_then(import_data);
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
