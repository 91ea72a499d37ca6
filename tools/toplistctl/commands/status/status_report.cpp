#include <array>
#include <functional>
#include <set>

#include "toplistctl/lib/output/json.h"
#include "toplistctl/lib/output/table.h"
#include "toplistctl/lib/site_view/status.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

std::string verdict(const PageStatus& page) {
  const std::string fault = page.late ? (page.age ? "LATE" : "MISSING") : "";
  if (page.next_run.is_built()) return fault.empty() ? "fine" : fault;
  return (fault.empty() ? "" : fault + ", ") + page.next_run.text();
}

std::string pages_table(const SiteStatus& status) {
  Table table({{"RECORD", Table::Align::right}, {"PAGE"}, {"AGE", Table::Align::right}, {"IS"}});
  for (const PageStatus& page : status.pages) {
    table.add_row({std::to_string(page.record), page.page,
                   page.age ? duration_text(*page.age) : "none", verdict(page)});
  }
  return table.text();
}

std::string running_text(const SiteStatus& status) {
  if (!status.running) return "No run is under way.\n";
  std::string text = "A run is under way";
  if (status.running->seconds) text += " for " + duration_text(*status.running->seconds);
  return text + (status.running_late ? ": LATE.\n" : ".\n");
}

/// A gauge without labels.
struct Metric {
  const char* name;
  const char* help;
  std::function<std::size_t(const SiteStatus&)> value;
};

std::size_t count_pages(const SiteStatus& status, bool (*counts)(const PageStatus&)) {
  return static_cast<std::size_t>(std::count_if(status.pages.begin(), status.pages.end(), counts));
}

const std::array<Metric, 9> kMetrics{{
    {"toplist_pages_late", "Pages that a run is to build and that are missing or too old.",
     [](const SiteStatus& status) {
       return count_pages(status, [](const PageStatus& page) { return page.late; });
     }},
    {"toplist_pages_missing", "Pages that are not there.",
     [](const SiteStatus& status) {
       return count_pages(status, [](const PageStatus& page) { return !page.age; });
     }},
    {"toplist_pages_not_built", "Pages that the next run does not build.",
     [](const SiteStatus& status) {
       return count_pages(status, [](const PageStatus& page) { return !page.next_run.is_built(); });
     }},
    {"toplist_next_run_ends_early", "1 when the next run ends before all toplists are built.",
     [](const SiteStatus& status) { return status.ending.empty() ? 0U : 1U; }},
    {"toplist_log_lines", "Lines that were logged since the newest page, or in the span asked for.",
     [](const SiteStatus& status) { return status.log_lines.size(); }},
    {"toplist_run_seconds", "For how long a run is under way; 0 when none is.",
     [](const SiteStatus& status) {
       return status.running ? static_cast<std::size_t>(status.running->seconds.value_or(0)) : 0U;
     }},
    {"toplist_trades_active", "Trades that can stand in toplists.",
     [](const SiteStatus& status) { return status.active_trades; }},
    {"toplist_trades_without_thumbnail", "Active trades without a thumbnail.",
     [](const SiteStatus& status) { return status.without_thumbnail; }},
    {"toplist_thumbnails_stale", "Thumbnails of active trades that are too old.",
     [](const SiteStatus& status) { return status.stale_thumbnails; }},
}};

void append_head(std::string& text, const std::string& name, const std::string& help) {
  text += "# HELP " + name + " " + help + "\n# TYPE " + name + " gauge\n";
}

/// A label's value: UTF-8, in which backslash, quote and line feed are escaped.
std::string label_value(const std::string& raw) {
  std::string text = as_utf8(raw);
  replace_all(text, "\\", "\\\\");
  replace_all(text, "\"", "\\\"");
  replace_all(text, "\n", "\\n");
  return text;
}

}  // namespace

std::string duration_text(std::int64_t seconds) {
  struct Unit {
    const char* name;
    std::int64_t seconds;
  };
  constexpr std::array<Unit, 4> kUnits{
      {{"d", kDaySeconds}, {"h", 60 * kMinuteSeconds}, {"m", kMinuteSeconds}, {"s", 1}}};
  std::string text;
  int shown = 0;
  for (const Unit& unit : kUnits) {
    const std::int64_t count = seconds / unit.seconds;
    seconds %= unit.seconds;
    if (count == 0 && shown == 0 && unit.seconds > 1) continue;
    if (shown++ == 2) break;
    text += (text.empty() ? "" : " ") + std::to_string(count) + unit.name;
  }
  return text;
}

std::string status_text(const SiteStatus& status) {
  std::string text = pages_table(status) + "\n";
  if (!status.ending.empty()) text += "The next run ends early: " + status.ending + "\n";
  text += running_text(status);
  text += std::to_string(status.active_trades) + " active trades, " +
          std::to_string(status.without_thumbnail) + " without a thumbnail, " +
          std::to_string(status.stale_thumbnails) + " with a stale one.\n";
  if (status.log_lines.empty()) return text + "Nothing was logged.\n";
  text += "Lines logged: " + std::to_string(status.log_lines.size()) + "\n\n";
  return text + log_summary(status.log_lines).text(Format::table);
}

std::string status_json(const SiteStatus& status) {
  Json pages = Json::array();
  for (const PageStatus& page : status.pages) {
    pages.push_back({{"record", page.record},
                     {"page", page.page},
                     {"age", page.age ? Json(*page.age) : Json()},
                     {"late", page.late},
                     {"next_run", page.next_run.word()},
                     {"reason", page.next_run.reason}});
  }
  Json json{{"fine", status.is_fine()}, {"pages", pages}, {"ending", status.ending}};
  for (const Metric& metric : kMetrics) {
    json[std::string(metric.name).substr(std::string_view("toplist_").size())] =
        metric.value(status);
  }
  json["under_way"] = status.running.has_value();
  return json_text(json);
}

std::string status_metrics(const SiteStatus& status) {
  std::string text;
  const std::string ages = "toplist_page_age_seconds";
  append_head(text, ages, "Age of a page.");
  std::set<std::string> told;  // a page may be that of several toplists
  for (const PageStatus& page : status.pages) {
    const std::string label = label_value(page.page);
    if (!page.age || !told.insert(label).second) continue;
    text.append(ages).append("{page=\"").append(label).append("\"} ");
    text.append(std::to_string(*page.age)).append("\n");
  }
  for (const Metric& metric : kMetrics) {
    append_head(text, metric.name, metric.help);
    text += std::string(metric.name) + " " + std::to_string(metric.value(status)) + "\n";
  }
  return text;
}

}  // namespace toplist::ctl
