// why TRADE: where a trade stands in each toplist, or everything that keeps it out.

#include <fmt/core.h>

#include <algorithm>
#include <ctime>
#include <iterator>
#include <memory>

#include "run/statistics.h"
#include "toplist/ranking.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/formats/order_names.h"
#include "toplistctl/lib/history/history.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/output/value.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "toplistctl/lib/site_view/standing.h"

namespace toplist::ctl {
namespace {

// --- for people ---

std::string record_text(const char* file, std::size_t record) {
  return record == 0 ? fmt::format("no record in {}", file)
                     : fmt::format("record {} of {}", record, file);
}

std::string status_text(const TradeRecord& trade) {
  return is_active(trade) ? "active" : fmt::format("not active: status {}", trade.status);
}

/// What the site's files hold of the trade, a line each.
std::string files_text(const SiteView& site, const TradeStanding& standing) {
  const TradeRecord& trade = *standing.trade;
  const TradeFiles& files = standing.files;
  const std::string_view domain = domain_of(trade);
  const char* required = site.run.config.thumbnails_required() ? ", required" : "";
  return printable_line("{} {}", trade.trade_id, domain) +
         printable_line("  address    {}", url_of(trade)) +
         printable_line("  database   {}, {}", record_text(kTradesPath, standing.record),
                        status_text(trade)) +
         printable_line("  figures    {}", record_text(kSumPath, files.sum_record)) +
         printable_line("  history    {}{}", files.history ? "" : "no ", history_path(domain)) +
         printable_line("  columns    {} in {}", files.columns, kExtraColumnsPath) +
         printable_line("  thumbnail  {}{}{}.jpg{}", files.thumbnail ? "" : "no ",
                        site.run.config.thumb_dir(), domain, required);
}

std::string neighbour_text(const TradeRow* row, const std::string& order_by) {
  if (row == nullptr) return "none";
  return fmt::format("{} {} with {}", row->id, row->domain, order_figure(*row, order_by));
}

std::string rank_text(const Standing& standing) {
  const std::string& order_by = standing.toplist->definition->order_by;
  const char* place = standing.has_place ? "" : ", but the template has no such place";
  return printable_line("  rank {}, number {} of {}, with {} {}{}", *standing.rank,
                        *standing.rank + 1, standing.toplist->passing.size(),
                        order_value_name(order_by), *standing.figure, place) +
         printable_line("  above: {}", neighbour_text(standing.above, order_by)) +
         printable_line("  below: {}", neighbour_text(standing.below, order_by));
}

std::string standing_text(const Standing& standing) {
  const ToplistView& toplist = *standing.toplist;
  std::string text = printable_line("{} (record {}, {})", toplist.definition->output_path,
                                    toplist.record, toplist.definition->template_path);
  if (standing.rank) text += rank_text(standing);
  for (const Drop& drop : standing.drops) {
    text += printable_line("  not shown: {}", reason_text(drop));
  }
  if (toplist.next_run.is_built()) return text;
  return text + printable_line("  page stays as it is: {}", toplist.next_run.text());
}

/// A line for an active trade of a site with a history. One that cannot be read is reported.
std::string trend_text(const TradeRow* row) {
  if (row == nullptr) return "";
  const auto trend = History::open().and_then([&](const auto& history) {
    return history ? history->trend(*row, std::time(nullptr)).map([](const Trend& found) {
      return printable_line("  trend      {}", found.text());
    })
                   : Expected<std::string>();
  });
  if (!trend) warn(trend.error().text());
  return trend.value_or("");
}

std::string why_text(const SiteView& site, const std::vector<TradeStanding>& standings) {
  std::string text;
  for (const TradeStanding& trade : standings) {
    text += (text.empty() ? "" : "\n") + files_text(site, trade) + trend_text(trade.row);
    for (const Standing& standing : trade.toplists) text += '\n' + standing_text(standing);
  }
  return text;
}

// --- for programs ---

Value value_of(const Standing& standing);
Value value_of(const TradeStanding& standing);

Value value_of(const Drop& drop) {
  const bool is_minimum = is_minimum_key(drop.filter);
  return Members{{"filter", drop.filter},
                 {"figure", is_minimum ? Value(drop.figure) : Value()},
                 {"minimum", is_minimum ? Value(drop.minimum) : Value()}};
}

template <typename Range>
List list_of(const Range& range) {
  List list;
  for (const auto& element : range) list.push_back(value_of(element));
  return list;
}

Value value_of(const Standing& standing) {
  const ToplistView& toplist = *standing.toplist;
  return Members{{"record", toplist.record},
                 {"template", toplist.definition->template_path},
                 {"page", toplist.definition->output_path},
                 {"built", toplist.next_run.is_built()},
                 {"rank", standing.rank},
                 {"place", standing.has_place},
                 {"figure", standing.figure},
                 {"reasons", list_of(standing.drops)}};
}

Value value_of(const TradeStanding& standing) {
  return Members{{"id", standing.trade->trade_id},
                 {"domain", domain_of(*standing.trade)},
                 {"active", is_active(*standing.trade)},
                 {"toplists", list_of(standing.toplists)}};
}

/// An object for one trade, a list for several of a domain.
std::string why_json(const std::vector<TradeStanding>& standings) {
  return json_text(standings.size() == 1 ? value_of(standings.front()) : Value(list_of(standings)));
}

// --- the command ---

struct Arguments {
  std::string site = ".";
  std::string trade;
  std::string toplist;
  bool json = false;
};

Expected<int> why(const Arguments& arguments) {
  if (const auto trades = read_file(kTradesPath); !trades) return tl::unexpected(trades.error());
  const SiteView site;
  const auto standings = standings_of(site, arguments.trade, arguments.toplist);
  if (!standings) return tl::unexpected(standings.error());
  if (standings->empty()) {
    return failure(
        fmt::format("{} has no trade with the number or domain {}", kTradesPath, arguments.trade));
  }
  if (!arguments.toplist.empty() && standings->front().toplists.empty()) {
    return failure(fmt::format("{} has no toplist with the template or page {}", kDefinitionsPath,
                               arguments.toplist));
  }
  if (!site.rehearsal.ending().empty()) warn("the next run ends early: " + site.rehearsal.ending());
  const bool shown = std::all_of(standings->begin(), standings->end(),
                                 [](const auto& trade) { return trade.is_shown_everywhere(); });
  return print(arguments.json ? why_json(*standings) : why_text(site, *standings),
               shown ? 0 : kExitFindings);
}

}  // namespace

void add_why_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command =
      program.add_command("why", "Report where a trade is shown, or why it is not");
  command.footer(
      "Exit status: 0 every toplist shows it, 1 some toplists do not, 2 the site cannot be read.\n"
      "Examples:\n"
      "  toplistctl why alpine-trails.example\n"
      "  toplistctl why 101 --toplist index.tpl --json");
  add_site_option(command, arguments->site);
  command.text("trade", "TRADE", arguments->trade, "A trade's number or domain").required();
  command.text("--toplist", "TEMPLATE", arguments->toplist,
               "Only this toplist: its template's name or its page's path");
  command.flag("--json", arguments->json, "JSON instead of text");
  command.run([arguments] {
    return enter_site(arguments->site).and_then([&] { return why(*arguments); });
  });
}

}  // namespace toplist::ctl
