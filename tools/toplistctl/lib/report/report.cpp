#include "toplistctl/lib/report/report.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <span>
#include <system_error>

#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/new_site/new_site.h"
#include "toplistctl/lib/report/html.h"
#include "toplistctl/lib/report/site_report.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_view/standing.h"

namespace toplist::ctl {
namespace {

/// A file of content/report/ with "{name}" replaced by the arguments.
template <typename... Arguments>
std::string filled_in(std::string_view file, const Arguments&... arguments) {
  return fmt::format(fmt::runtime(content(fmt::format("report/{}", file))), arguments...);
}

/// The texts of `render` for all elements, one after the other.
template <typename Range, typename Render>
std::string joined(const Range& range, const Render& render) {
  std::string text;
  for (const auto& element : range) text += render(element);
  return text;
}

// --- the state ---

/// The text without its line feed.
std::string trimmed_line(std::string text) {
  text.erase(text.find_last_not_of('\n') + 1);
  return text;
}

std::string table(const Records& records) {
  const auto cells = [](const char* tag) {
    return [tag](const std::string& text) {
      return fmt::format("<{0}>{1}</{2}>", tag, html_text(text),
                         std::string_view(tag).substr(0, 2));
    };
  };
  return fmt::format("<table class=\"boxed\"><thead><tr>{}</tr></thead><tbody>{}</tbody></table>",
                     joined(records.names(), cells("th scope=\"col\"")),
                     joined(records.rows(), [&](const auto& row) {
                       return fmt::format("<tr>{}</tr>", joined(row, cells("td")));
                     }));
}

std::string pages_table(const SiteStatus& status) {
  Records pages({"Page", "Age", "State", "Next run"});
  for (const PageStatus& page : status.pages) {
    pages.add({page.page, page.age ? duration_text(*page.age) : "none", state_of(page),
               next_run_of(page)});
  }
  return table(pages);
}

/// What is wrong, in sentences, besides the pages that are late or missing.
std::vector<std::string> problems_of(const SiteStatus& status) {
  std::vector<std::string> problems;
  for (const PageStatus& page : status.pages) {
    if (page.cut) problems.push_back(fmt::format("{}: {}.", page.page, *page.cut));
  }
  if (!status.ending.empty()) {
    problems.push_back(fmt::format("The next run ends early: {}.", status.ending));
  }
  if (const auto& room = status.little_room) {
    problems.push_back(fmt::format("{}: {}.", room->folder, room->text));
  }
  if (status.log_fault) problems.push_back(*status.log_fault + ".");
  if (status.failed_runs() > 0) {
    problems.push_back(fmt::format("{} ended early since the newest page was written.",
                                   count_of(status.failed_runs(), "run")));
  }
  if (status.running_late) problems.push_back(trimmed_line(running_text(status)));
  return problems;
}

std::string problems_list(const SiteStatus& status) {
  const auto problems = problems_of(status);
  if (problems.empty()) return "";
  return fmt::format("<ul class=\"problems\">{}</ul>", joined(problems, [](const auto& problem) {
                       return fmt::format("<li>{}</li>", html_text(problem));
                     }));
}

std::string log_table(const std::vector<LogLine>& lines) {
  return lines.empty() ? "<p class=\"about\">Nothing.</p>" : table(log_summary(lines));
}

// --- totals and changes ---

/// Such as "+12 %"; empty when there is nothing to compare with.
std::string change_cell(std::int64_t now, std::int64_t before) {
  if (before <= 0) return "<td class=\"num\">–</td>";
  const std::int64_t percent = (now - before) * 100 / before;
  return fmt::format("<td class=\"num {}\">{}{} %</td>", percent < 0 ? "down" : "up",
                     percent > 0 ? "+" : "", number_text(percent));
}

std::string span_card(const Span& span) {
  constexpr std::pair<const char*, std::int64_t SnapshotTotals::*> kRows[] = {
      {"In", &SnapshotTotals::rin},
      {"Unique", &SnapshotTotals::uin},
      {"Out", &SnapshotTotals::out},
      {"Clicks", &SnapshotTotals::clk}};
  return fmt::format(
      "<article class=\"card\"><h3>Last {0}</h3><table><thead><tr><td></td><th scope=\"col\" "
      "class=\"num\">Now</th><th scope=\"col\" class=\"num\">Before</th><th scope=\"col\" "
      "class=\"num\">Change</th></tr></thead><tbody>{1}</tbody></table></article>",
      span.name, joined(kRows, [&span](const auto& row) {
        const auto& [name, member] = row;
        return fmt::format(
            "<tr><th scope=\"row\">{}</th><td class=\"num\"><b>{}</b></td><td "
            "class=\"num\">{}</td>{}</tr>",
            name, number_text(span.now.*member),
            span.before ? number_text((*span.before).*member) : "–",
            change_cell(span.now.*member, span.before ? (*span.before).*member : 0));
      }));
}

/// The title, or the domain of a partner without one.
std::string title_of(const TradeRow& row) {
  return row.extra_columns.empty() || row.extra_columns[0].empty() ? row.domain
                                                                   : decoded(row.extra_columns[0]);
}

/// A partner's title, which leads to its section if it has one.
std::string link_to(const SiteReport& report, const Partner& partner) {
  const auto index = static_cast<std::size_t>(&partner - report.partners.data());
  const std::string title = fmt::format("<bdi>{}</bdi>", html_text(title_of(*partner.row)));
  return index < report.top ? fmt::format("<a href=\"#p{}\">{}</a>", index + 1, title) : title;
}

/// A card of those partners for which `weight` is above 0, those of most weight first.
template <typename Weight, typename Figure>
std::string moves_card(const SiteReport& report, const char* title, bool is_known,
                       const Weight& weight, const Figure& figure) {
  constexpr std::size_t kMost = 8;
  std::vector<const Partner*> moved;
  for (const Partner& partner : report.partners) {
    if (weight(partner) > 0) moved.push_back(&partner);
  }
  std::ranges::stable_sort(moved, std::ranges::greater(),
                           [&](const Partner* p) { return weight(*p); });
  std::string items =
      joined(std::span(moved).first(std::min(moved.size(), kMost)), [&](const Partner* partner) {
        return fmt::format("<li><span>{}</span><b>{}</b></li>", link_to(report, *partner),
                           figure(*partner));
      });
  if (moved.size() > kMost)
    items += fmt::format("<li>and {} more</li>",
                         number_text(static_cast<std::int64_t>(moved.size() - kMost)));
  if (moved.empty()) items = is_known ? "<li>Nobody</li>" : "<li>Needs a history of a week</li>";
  return fmt::format("<article class=\"card\"><h3>{}</h3><ul class=\"moves\">{}</ul></article>",
                     title, items);
}

std::int64_t week_of(const Partner& partner) { return partner.row->periods[kPeriod07].rin; }

std::string changes(const SiteReport& report) {
  const auto difference = [](const Partner& partner) {
    return fmt::format("{}{}", partner.change() > 0 ? "+" : "", number_text(partner.change()));
  };
  const auto week = [](const Partner& partner) { return number_text(week_of(partner)); };
  const auto is_silent = [](const Partner& p) { return p.row->periods[kPeriod24].rin <= 0; };
  const bool known = report.knows_last_week;
  return moves_card(
             report, "Rose most <small>visitors in, this week against last week</small>", known,
             [](const Partner& p) { return p.change(); }, difference) +
         moves_card(
             report, "Fell most <small>visitors in, this week against last week</small>", known,
             [](const Partner& p) { return -p.change(); }, difference) +
         moves_card(
             report, "Sent nothing for a day <small>visitors in, this week</small>", true,
             [&](const Partner& p) {
               return is_silent(p) ? std::max<std::int64_t>(week_of(p), 0) + 1 : 0;
             },
             week) +
         moves_card(
             report, "New since last week <small>visitors in, this week</small>", known,
             [](const Partner& p) {
               return p.is_new ? std::max<std::int64_t>(week_of(p), 0) + 1 : 0;
             },
             week);
}

std::string charts(const SiteReport& report) {
  if (!report.has_history) return "<p class=\"about\">Charts need a history.</p>";
  return "<p class=\"legend\"><span class=\"key in\">visitors in</span><span class=\"key "
         "out\">visitors out</span><span class=\"key gap\">not recorded</span></p>" +
         chart(report.hours, "hours", "The last 48 hours", "visitors an hour") +
         chart(report.days, "days", "The last 30 days", "visitors a day");
}

// --- partners ---

/// Where a toplist has the partner, or why not.
std::string place_text(const SiteReport& report, const Partner& partner, std::size_t index) {
  const ToplistView& toplist = report.site->toplists[index];
  if (!partner.ranks[index]) {
    const std::vector<Drop> drops = toplist.filters.drops(*partner.row);
    return "not shown: " + (drops.empty() ? "the toplist cannot be read" : reason_text(drops[0]));
  }
  const auto number = static_cast<std::int64_t>(*partner.ranks[index] + 1);
  std::string text = fmt::format("number {} of {}", number_text(number),
                                 number_text(static_cast<std::int64_t>(toplist.passing.size())));
  if (!toplist.next_run.is_built()) return text + ", but the next run does not write the page";
  return report.is_shown(partner, index) ? text : text + ", too low for the page";
}

const std::string& page_of(const SiteReport& report, std::size_t index) {
  return report.site->toplists[index].definition->output_path;
}

/// The pages that show the partner; or why the one that comes nearest does not.
std::string where(const SiteReport& report, const Partner& partner) {
  std::string pages;
  std::optional<std::size_t> nearest;
  for (std::size_t i = 0; i < partner.ranks.size(); ++i) {
    if (report.is_shown(partner, i)) {
      pages += fmt::format("{}{} {}", pages.empty() ? "" : ", ", page_of(report, i),
                           *partner.ranks[i] + 1);
    }
    if (!nearest || (partner.ranks[i] && !partner.ranks[*nearest])) nearest = i;
  }
  if (!pages.empty()) return html_text(pages);
  if (!nearest) return "none: the site has no toplist";
  return html_text(fmt::format("none; {}: {}", page_of(report, *nearest),
                               place_text(report, partner, *nearest)));
}

/// The first kQualities ratios are the quality of the traffic; the last one is the balance.
constexpr std::size_t kQualities = kRatios.size() - 1;

Traffic day_of(const Partner& partner) {
  const PeriodBlock& day = partner.row->periods[kPeriod24];
  return {day.rin, day.out};
}

/// Thumbnails as data, until they take too much room.
class Pictures {
 public:
  explicit Pictures(const SiteView& site) : folder_(site.run.config.thumb_dir()) {}

  /// Empty when there is none. A domain is no path, and another file no picture.
  std::string of(const TradeRow& row) {
    constexpr std::size_t kMostBytes = 64UL << 10U;
    if (row.domain.find('/') != std::string::npos) return "";
    const std::string path = folder_ + row.domain + ".jpg";
    std::error_code none;  // then the size is above any
    if (std::filesystem::file_size(path, none) > std::min(kMostBytes, room_)) return "";
    const auto file = read_file(path);
    if (!file || !file->starts_with("\xFF\xD8\xFF") || file->size() > room_) return "";
    room_ -= file->size();
    return fmt::format(
        "<img src=\"data:image/jpeg;base64,{}\" alt=\"\" width=\"48\" height=\"36\">",
        base64(*file));
  }

 private:
  std::string folder_;
  std::size_t room_ = 512UL << 10U;  ///< as text, a third more
};

std::string top_table(const SiteReport& report, std::span<const Partner> partners) {
  std::int64_t most = 0;
  for (const Partner& partner : partners) {
    most = std::max({most, day_of(partner).in, day_of(partner).out});
  }
  Pictures pictures(*report.site);
  std::size_t number = 0;
  return filled_in(
      "table.html",
      fmt::arg("rows", joined(partners, [&](const Partner& partner) {
                 const PeriodBlock& day = partner.row->periods[kPeriod24];
                 return filled_in(
                     "row.html", fmt::arg("number", ++number),
                     fmt::arg("picture", pictures.of(*partner.row)),
                     fmt::arg("title", html_text(title_of(*partner.row))),
                     fmt::arg("domain", html_text(partner.row->domain)),
                     fmt::arg("in", number_text(day.rin)), fmt::arg("out", number_text(day.out)),
                     fmt::arg("bars", bars(day_of(partner), most)),
                     fmt::arg("balance", number_text(day.percent[kQualities])),
                     fmt::arg("ratios", joined(std::span(day.percent).first(kQualities),
                                               [](std::int32_t percent) {
                                                 return fmt::format(
                                                     "<td class=\"num wide\">{}</td>",
                                                     number_text(percent));
                                               })),
                     fmt::arg("days", report.has_history ? sparkline(*partner.days) : "–"),
                     fmt::arg("where", where(report, partner)));
               })));
}

/// Lines without end tags, which are optional: there may be thousands of them.
std::string others_table(const SiteReport& report, std::span<const Partner> partners) {
  if (partners.empty()) return "";
  std::size_t number = report.top;
  const auto cell = [](std::int32_t figure) { return "<td>" + number_text(figure); };
  const std::string rows = joined(partners, [&](const Partner& partner) {
    const PeriodBlock& day = partner.row->periods[kPeriod24];
    return fmt::format("<tr><td>{}<td>{}{}{}{}{}<td>{}\n", ++number, html_text(partner.row->domain),
                       cell(day.rin), cell(day.out), cell(day.percent[kQualities]),
                       joined(std::span(day.percent).first(kQualities), cell),
                       where(report, partner));
  });
  return filled_in("others.html", fmt::arg("count", count_of(partners.size(), "partner")),
                   fmt::arg("rows", rows));
}

/// A line of figures, one for each period.
template <typename Figure>
std::string figures_row(std::string_view name, const TradeRow& row, const Figure& figure) {
  return fmt::format("<tr><th scope=\"row\">{}</th>{}</tr>", name,
                     joined(row.periods, [&](const PeriodBlock& block) {
                       return fmt::format("<td>{}</td>", number_text(figure(block)));
                     }));
}

std::string figures(const TradeRow& row) {
  std::string rows = joined(kCounters, [&row](const CounterEntry& counter) {
    return figures_row(counter.name, row,
                       [&](const PeriodBlock& block) { return block.*counter.member; });
  });
  for (std::size_t i = 0; i < kRatios.size(); ++i) {
    rows += figures_row(fmt::format("{} %", kRatios[i].name), row,
                        [i](const PeriodBlock& block) { return block.percent[i]; });
  }
  for (std::size_t i = 0; i < kFurtherNames.size(); ++i) {
    rows += figures_row(kFurtherNames[i], row,
                        [i](const PeriodBlock& block) { return block.further[i]; });
  }
  return rows;
}

/// The trade's address. Only one of the web is a link.
std::string address(const TradeRow& row) {
  const std::string url = html_text(row.url);
  if (!row.url.starts_with("http://") && !row.url.starts_with("https://"))
    return "<bdi>" + url + "</bdi>";
  return fmt::format("<a href=\"{0}\" rel=\"noopener noreferrer nofollow\"><bdi>{0}</bdi></a>",
                     url);
}

std::string sections(const SiteReport& report, std::span<const Partner> partners) {
  std::size_t number = 0;
  return joined(partners, [&](const Partner& partner) {
    const TradeRow& row = *partner.row;
    std::string ranks;
    for (std::size_t i = 0; i < partner.ranks.size(); ++i) {
      ranks += fmt::format("<li><b>{}</b>: {}</li>", html_text(page_of(report, i)),
                           html_text(place_text(report, partner, i)));
    }
    ++number;
    return filled_in(
        "partner.html", fmt::arg("number", number), fmt::arg("title", html_text(title_of(row))),
        fmt::arg("address", address(row)), fmt::arg("id", html_text(row.id)),
        fmt::arg("chart", report.has_history ? chart(*partner.days, fmt::format("c{}", number),
                                                     "30 days", "visitors a day")
                                             : ""),
        fmt::arg("figures", figures(row)), fmt::arg("ranks", ranks));
  });
}

/// Allows this page's own style and script, and nothing that a text of others could bring in.
std::string nonce() {
  std::random_device random;
  return fmt::format("{:08x}{:08x}{:08x}{:08x}", random(), random(), random(), random());
}

std::string page(const SiteReport& report) {
  const std::span partners(report.partners);
  const std::size_t top = std::min(report.top, partners.size());
  const bool is_fine = report.status.is_fine();
  return filled_in("page.html", fmt::arg("nonce", nonce()),
                   fmt::arg("site", html_text(std::filesystem::current_path().filename().string())),
                   fmt::arg("style", content("report/style.css")),
                   fmt::arg("script", content("report/report.js")),
                   fmt::arg("time", time_text(report.now, "%A, %-d %B %Y, %H:%M")),
                   fmt::arg("trades", html_text(trimmed_line(trades_text(report.status)))),
                   fmt::arg("notice", report.has_history ? "" : content("report/notice.html")),
                   fmt::arg("mood", is_fine ? "fine" : "wrong"),
                   fmt::arg("verdict", is_fine ? "fine" : "something is wrong"),
                   fmt::arg("problems", problems_list(report.status)),
                   fmt::arg("pages", pages_table(report.status)),
                   fmt::arg("log", log_table(report.last_day)),
                   fmt::arg("totals", joined(report.spans, span_card)),
                   fmt::arg("charts", charts(report)), fmt::arg("changes", changes(report)),
                   fmt::arg("table", top_table(report, partners.first(top))),
                   fmt::arg("others", others_table(report, partners.subspan(top))),
                   fmt::arg("partners", sections(report, partners.first(top))));
}

/// A run takes a file that it cannot read for an empty one. Here its figures would be 0 without a
/// word, so only a file that is not there counts as empty.
Expected<void> check_readable(const SiteView& site) {
  if (const auto trades = read_file(kTradesPath); !trades) return tl::unexpected(trades.error());
  std::vector<std::string> paths{kSumPath, kExtraColumnsPath, kDefinitionsPath, kSettingsPath};
  for (const TradeRow& row : site.run.rows) paths.push_back(history_path(row.domain));
  for (const std::string& path : paths) {
    if (const auto file = read_file_if_there(path); !file) return tl::unexpected(file.error());
  }
  return {};
}

}  // namespace

Expected<std::string> report_page(const ReportOptions& options) {
  const SiteView site;
  return check_readable(site).and_then([&] { return make_report(site, options); }).map(page);
}

}  // namespace toplist::ctl
