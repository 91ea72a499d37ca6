// show trades|figures|toplists|log: what a site contains, for people and for programs.

#include <fmt/core.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <limits>
#include <memory>
#include <set>

#include "run/statistics.h"
#include "run/sys_log.h"
#include "toplist/ranking.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/formats/log_lines.h"
#include "toplistctl/lib/formats/order_names.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/output/records.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_data.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "toplistctl/lib/site_view/site_view.h"
#include "toplistctl/lib/templates/template_walk.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = ".";
  bool json = false;
  std::string period{kPeriodNames[kPeriod24]};
  std::string order_by;  ///< empty: as in the database
  std::size_t top = std::numeric_limits<std::size_t>::max();
  std::optional<std::int64_t> since;  ///< seconds
  bool summary = false;

  [[nodiscard]] Format format() const { return json ? Format::json : Format::table; }
};

// --- trades ---

Expected<std::string> trades(const Arguments& arguments) {
  const auto trades = read_trades();
  if (!trades) return tl::unexpected(trades.error());
  Records records({"record", "id", "status", "active", "domain", "url"});
  std::size_t record = 0;
  for (const TradeRecord& trade : *trades) {
    records.add({++record, trade.trade_id, trade.status, is_active(trade), domain_of(trade),
                 url_of(trade)});
  }
  return records.text(arguments.format());
}

// --- figures ---

/// The columns of a period, in the order of the table of counters.
template <typename Add>
void visit_figures(const PeriodBlock& block, const Add& add) {
  for (const CounterEntry& counter : kCounters) add(counter.name, block.*counter.member);
  for (std::size_t i = 0; i < kRatios.size(); ++i) add(kRatios[i].name, block.percent[i]);
  for (std::size_t i = 0; i < kFurtherNames.size(); ++i) add(kFurtherNames[i], block.further[i]);
}

std::vector<std::string> figure_columns() {
  std::vector<std::string> names{"id", "domain"};
  visit_figures({}, [&names](std::string_view name, std::int32_t) { names.emplace_back(name); });
  return names;
}

/// The steps of a run that give the figures.
constexpr std::array<Step, 4> kFigureSteps{load_trade_set, build_row_set, add_histories,
                                           read_recent_figures};

Expected<std::string> figures(const Arguments& arguments) {
  if (const auto sum = read_file(kSumPath); !sum) return tl::unexpected(sum.error());
  SiteView site(kFigureSteps);
  std::vector<TradeRow*>& rows = site.run.ranking;
  if (!arguments.order_by.empty()) {
    rank_rows(site.run.rows, *order_value_named(arguments.order_by), rows);
  }
  const auto period = std::find(kPeriodNames.begin(), kPeriodNames.end(), arguments.period);
  Records records(figure_columns());
  for (std::size_t i = 0; i < std::min(rows.size(), arguments.top); ++i) {
    List values{parse_int32(rows[i]->id), rows[i]->domain};
    visit_figures(rows[i]->periods[static_cast<std::size_t>(period - kPeriodNames.begin())],
                  [&values](std::string_view, std::int32_t value) { values.emplace_back(value); });
    records.add(std::move(values));
  }
  return records.text(arguments.format());
}

// --- toplists ---

Members drops_of(const ToplistView& toplist) {
  Members drops;
  for (const auto& [filter, count] : toplist.dropped) drops.emplace_back(filter, count);
  return drops;
}

std::string order_text(const std::string& order_by) {
  return is_order_value(order_by) ? order_by : fmt::format("{} (as 16)", order_by);
}

/// The places of a page are the ranks that its template names. It shows those that have a trade.
Expected<std::string> toplists(const Arguments& arguments) {
  if (const auto file = read_file(kDefinitionsPath); !file) return tl::unexpected(file.error());
  const SiteView site;
  Records for_people({"record", "template", "page", "order_by", "next_run", "passing", "places",
                      "shown", "dropped_by"});
  Records for_programs({"record", "template", "page", "order_by", "mode", "built", "next_run",
                        "reason", "passing", "places", "shown", "dropped"});
  for (const ToplistView& toplist : site.toplists) {
    const auto& [template_path, page, order_by, mode, check_value] = *toplist.definition;
    const Prospect& next_run = toplist.next_run;
    const std::set<std::int32_t> places = ranks_named(toplist);
    const auto shown = std::count_if(places.begin(), places.end(), [&toplist](std::int32_t rank) {
      return static_cast<std::uint32_t>(rank) < toplist.passing.size();
    });
    for_people.add({toplist.record, template_path, page, order_text(order_by), next_run.text(),
                    toplist.passing.size(), places.size(), shown, drops_of(toplist)});
    for_programs.add({toplist.record, template_path, page, order_by, mode, next_run.is_built(),
                      next_run.word(), next_run.reason, toplist.passing.size(), places.size(),
                      shown, drops_of(toplist)});
  }
  return arguments.json ? for_programs.text(Format::json) : for_people.text(Format::table);
}

// --- log ---

Expected<std::string> log(const Arguments& arguments) {
  const auto text = read_file_if_there(kLogPath);
  if (!text) return tl::unexpected(text.error());
  struct stat folder {};
  if (!*text && ::stat(kLogFolder, &folder) != 0) {
    return system_error("cannot open", kLogFolder, errno);
  }
  std::vector<LogLine> lines = read_log(text->value_or(""));
  if (arguments.since) {
    lines = lines_since(std::move(lines), std::time(nullptr) - *arguments.since);
  }
  return (arguments.summary ? log_summary(lines) : log_records(lines)).text(arguments.format());
}

// --- the command ---

void add_figures_options(const Command& command, Arguments& arguments) {
  command.choice("--period", "PERIOD", arguments.period, {kPeriodNames.begin(), kPeriodNames.end()},
                 "The figures of this period, instead of 24");
  command.checked(
      "--sort", "KEY", arguments.order_by,
      [](const std::string& key) {
        return order_value_named(key) ? "" : fmt::format("no order-by value \"{}\"", key);
      },
      "Order by this value: its number, 1 to 60, or its name, such as rin24, clk24/rin24 or "
      "further1_24");
  command.number("--top", "N", arguments.top, 1, "Print only the first N trades");
}

void add_log_options(const Command& command, Arguments& arguments) {
  command.duration("--since", arguments.since,
                   "Print only the lines of this span of time, up to now");
  command.flag("--summary", arguments.summary,
               "Print one row for each kind of line: how often, first and last time");
}

struct Subject {
  const char* name;
  const char* about;
  Expected<std::string> (*text)(const Arguments& arguments);
  void (*add_options)(const Command& command, Arguments& arguments);
  const char* example;
};
constexpr Subject kSubjects[] = {
    {"trades", "The trade database, record by record", trades, nullptr, "toplistctl show trades"},
    {"figures", "The figures of the active trades in one period", figures, add_figures_options,
     "toplistctl show figures --period 24 --sort clk24/rin24 --top 20"},
    {"toplists", "What the next run does with each toplist, and how many trades it shows", toplists,
     nullptr, "toplistctl show toplists --json"},
    {"log", "The system log in readable form", log, add_log_options,
     "toplistctl show log --since 1d --summary"},
};

void add_subject(const Command& show, const Subject& subject) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command = show.add_command(subject.name, subject.about);
  add_site_option(command, arguments->site);
  command.flag("--json", arguments->json, "JSON instead of a table");
  if (subject.add_options != nullptr) subject.add_options(command, *arguments);
  command.footer(fmt::format("Example: {}", subject.example));
  command.run([arguments, text = subject.text] {
    return enter_site(arguments->site)
        .and_then([&] { return text(*arguments); })
        .map([](const std::string& shown) { return print(shown); });
  });
}

}  // namespace

void add_show_command(const Command& program) {
  const Command show = program.add_command("show", "List trades, figures, toplists or the log");
  show.require_command();
  for (const Subject& subject : kSubjects) add_subject(show, subject);
}

}  // namespace toplist::ctl
