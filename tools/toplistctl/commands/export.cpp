#include <fmt/core.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "run/statistics.h"
#include "toplist/ranking.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/formats/columns_file.h"
#include "toplistctl/lib/formats/figures_csv.h"
#include "toplistctl/lib/formats/trades_csv.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/output/records.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_data.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "toplistctl/lib/site_view/site_view.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

Expected<std::string> trades_csv() {
  return read_trades().and_then([](const std::vector<TradeRecord>& trades) {
    return read_file(kExtraColumnsPath).map([&trades](const std::string& columns) {
      return export_trades(trades, columns);
    });
  });
}

Expected<std::string> figures_csv() {
  return read_trades().and_then([](const std::vector<TradeRecord>& trades) {
    return read_file(kSumPath).and_then(
        [&trades](const std::string& sum) { return export_figures(trades, sum, read_history); });
  });
}

/// Extra columns of the active trade with most of them, of which tags can name so many.
std::size_t width_of(const ToplistView& toplist) {
  std::size_t width = 0;
  for (const TradeRow* row : toplist.ranking) width = std::max(width, row->extra_columns.size());
  return std::min(width, kNamedColumns);
}

/// The ranked trades of a toplist as a run would show them now, for other pages and programs. All
/// that pass the toplist's settings are there, also after the last rank that its template names; of
/// the columns alternatives are picked. Ranks count from 0, as in tags.
std::string ranked_trades(const ToplistView& toplist, Format format) {
  const std::size_t width = width_of(toplist);
  std::vector<std::string> names{"rank", "id", "domain", "url", "figure"};
  for (std::size_t i = 0; i < width; ++i) names.push_back(column_name(i));
  Records records(std::move(names));
  std::size_t rank = 0;
  for (const TradeRow* row : toplist.passing) {
    List values{rank++, parse_int32(row->id), row->domain, row->url,
                order_figure(*row, toplist.definition->order_by)};
    for (std::size_t i = 0; i < width; ++i) {
      values.emplace_back(i < row->extra_columns.size() ? row->extra_columns[i] : "");
    }
    records.add(std::move(values));
  }
  return records.text(format);
}

struct ToplistArguments {
  std::string site = ".";
  std::string name;  ///< of a template or page
  bool json = false;
};

Expected<int> export_toplist(const ToplistArguments& arguments) {
  const auto definitions =
      enter_site(arguments.site).and_then([] { return read_file(kDefinitionsPath); });
  if (!definitions) return tl::unexpected(definitions.error());
  const SiteView site;
  const ToplistView* toplist = site.find(arguments.name);
  if (toplist == nullptr) {
    return failure(fmt::format("{} has no toplist with the template or page {}", kDefinitionsPath,
                               arguments.name));
  }
  if (!toplist->next_run.is_built()) {
    warn(fmt::format("the next run does not write {}: {}", toplist->definition->output_path,
                     toplist->next_run.text()));
  }
  return print(ranked_trades(*toplist, arguments.json ? Format::json : Format::csv));
}

void add_toplist(const Command& parent) {
  const auto arguments = std::make_shared<ToplistArguments>();
  const Command command =
      parent.add_command("toplist", "Print the ranked trades that a toplist shows now");
  add_site_option(command, arguments->site);
  command
      .text("template", "TEMPLATE", arguments->name,
            "A name as in the definitions, or a page's path")
      .required();
  command.flag("--json", arguments->json, "JSON instead of CSV");
  command.footer(
      "Examples:\n"
      "  toplistctl export toplist index.tpl | head -11 >top10.csv\n"
      "  toplistctl export toplist --json index.tpl");
  command.run([arguments] { return export_toplist(*arguments); });
}

void add_subject(const Command& parent, const std::string& name, const std::string& about,
                 Expected<std::string> (*csv)()) {
  const auto site = std::make_shared<std::string>(".");
  const Command command = parent.add_command(name, about);
  add_site_option(command, *site);
  command.footer(
      fmt::format("Example:\n  toplistctl export {0} --site /srv/mysite >{0}.csv", name));
  command.run([site, csv]() -> Expected<int> {
    return enter_site(*site).and_then(csv).map([](const std::string& text) { return print(text); });
  });
}

}  // namespace

void add_export_command(const Command& program) {
  const Command command =
      program.add_command("export", "Print trades, figures or a toplist as CSV");
  command.require_command();
  add_subject(command, "trades", "Print a line for each trade, with its texts", trades_csv);
  add_subject(command, "figures", "Print a line for each trade and period", figures_csv);
  add_toplist(command);
}

}  // namespace toplist::ctl
