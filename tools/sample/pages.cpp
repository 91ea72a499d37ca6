#include "sample/pages.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "util/text.h"

// In the patterns below NNN stands for a rank as tags spell it (from 000) and {n} for the same rank
// as people count it (from 1). Templates know no loops, so every rank is written out.
//
// A tag beyond the end of the list gives a single space. The style sheet hides every element whose
// data-id is one, so a page looks right however many trades pass its filters. Two tags never touch
// each other: some other character always stands between them.
namespace toplist::site {
namespace {

/// Ranks from `first` up to but without `end`, each written by the same pattern.
struct RankedBlock {
  std::size_t first;
  std::size_t end;
  std::string_view pattern;
};

struct Design {
  std::string_view name;  ///< of the page's file, without ".html"
  std::string_view menu;
  std::string_view heading;
  std::string_view lead;
  std::string_view order_by;
  std::string_view mode;
  std::vector<std::string> settings;
  std::string_view open;  ///< before the first ranked block
  RankedBlock head;       ///< no ranks where the page has no special first places
  std::string_view between;
  RankedBlock rows;
  std::string_view close;
};

constexpr RankedBlock kNoHead{0, 0, ""};

constexpr std::string_view kPodium = R"(<article class="podium" data-id="%%tid_NNN%%">
<a class="shot" href="out.cgi%%lnk_NNN%%"><img src="%%img_NNN%%" alt="" width="240" height="180"></a>
<div class="body"><span class="medal">{n}</span>
<h2><a href="out.cgi%%lnk_NNN%%">%%tit_NNN%%</a></h2>
<p>%%des_NNN%%</p>
<p class="figures"><b>%%rin24_NNN%%</b> visitors in <i>·</i> <b>%%out24_NNN%%</b> sent out</p></div>
</article>
)";

constexpr std::string_view kTableOpen = R"(<section class="podiums" style="--max:%%rin24_000%%">
)";

constexpr std::string_view kTableHead = R"(</section>
<table class="ranked" style="--max:%%rin24_000%%">
<thead><tr><th scope="col">#</th><th scope="col">Site</th><th scope="col" class="wide">Topic</th>
<th scope="col" class="num">In, 24 h</th><th scope="col" class="num wide">Unique</th>
<th scope="col" class="num">Out</th><th scope="col" class="num wide">Clicks</th>
<th scope="col" class="num wide">Last hour</th></tr></thead>
<tbody>
)";

constexpr std::string_view kTableRow = R"(<tr data-id="%%tid_NNN%%" style="--v:%%rin24_NNN%%">
<td class="rank">{n}</td>
<td class="site"><div><img src="%%img_NNN%%" alt="" width="48" height="36" loading="lazy">
<span><a href="out.cgi%%lnk_NNN%%">%%tit_NNN%%</a><small>%%dom_NNN%%</small></span></div></td>
<td class="wide"><span class="chip" data-topic="%%att00_NNN%%">%%att00_NNN%%</span></td>
<td class="num bar"><b>%%rin24_NNN%%</b></td><td class="num wide">%%uin24_NNN%%</td>
<td class="num">%%out24_NNN%%</td><td class="num wide">%%clk24_NNN%%</td>
<td class="num wide">%%rin60_NNN%%</td>
</tr>
)";

constexpr std::string_view kCard = R"(<article class="card" data-id="%%tid_NNN%%">
<a class="shot" href="out.cgi%%lnk_NNN%%"><img src="%%img_NNN%%" alt="" width="240" height="180" loading="lazy"></a>
<h2><a href="out.cgi%%lnk_NNN%%">%%tit_NNN%%</a></h2>
<p>%%des_NNN%%</p>
<p class="meta"><span class="chip" data-topic="%%att00_NNN%%">%%att00_NNN%%</span>
<span>%%att01_NNN%%</span><span>%%rin07_NNN%% this week</span></p>
</article>
)";

constexpr std::string_view kBusyRow = R"(<li data-id="%%tid_NNN%%" style="--v:%%rin60_NNN%%">
<span class="rank">{n}</span>
<span class="name"><a href="out.cgi%%lnk_NNN%%">%%tit_NNN%%</a><small>%%dom_NNN%%</small></span>
<span class="track"><i></i></span>
<span class="now"><b>%%rin60_NNN%%</b> this hour</span>
<span class="day">%%uin24_NNN%% people today</span>
</li>
)";

constexpr std::string_view kGroupRow = R"(<article class="entry" data-id="%%tid_NNN%%">
<a class="shot" href="out.cgi%%lnk_NNN%%"><img src="%%img_NNN%%" alt="" width="240" height="180" loading="lazy"></a>
<div class="body"><h2><span class="rank">{n}</span> <a href="out.cgi%%lnk_NNN%%">%%tit_NNN%%</a></h2>
<p>%%des_NNN%%</p>
<p class="meta"><span class="chip" data-topic="%%att00_NNN%%">%%att00_NNN%%</span>
<span>%%att01_NNN%%</span><span>a partner since %%att02_NNN%%</span></p></div>
<dl><div><dt>In</dt><dd>%%rin99_NNN%%</dd></div><div><dt>Out</dt><dd>%%out99_NNN%%</dd></div>
<div><dt>Clicks</dt><dd>%%clk99_NNN%%</dd></div></dl>
</article>
)";

constexpr std::string_view kRatioTile =
    R"(<article class="tile" data-id="%%tid_NNN%%" style="--clk:%%clk24_NNN%%;--rin:%%rin24_NNN%%">
<div class="ring"><span class="share"></span></div>
<div class="body"><h2><a href="out.cgi%%lnk_NNN%%">%%tit_NNN%%</a></h2>
<p>%%clk24_NNN%% clicks by %%rin24_NNN%% visitors</p>
<p class="meta"><span class="chip" data-topic="%%att00_NNN%%">%%att00_NNN%%</span><span>No. {n}</span></p></div>
</article>
)";

constexpr std::string_view kPlainRow =
    R"(<tr data-id="%%tid_NNN%%"><td class="rank">{n}</td><td>%%dom_NNN%%</td>
<td><a href="out.cgi%%lnk_NNN%%">%%tit_NNN%%</a></td>
<td class="num">%%rin60_NNN%%</td><td class="num">%%rin24_NNN%%</td><td class="num">%%uin24_NNN%%</td>
<td class="num">%%out24_NNN%%</td><td class="num">%%clk24_NNN%%</td><td class="num">%%rin99_NNN%%</td></tr>
)";

constexpr std::string_view kPlainHead = R"(<table class="ranked plain">
<thead><tr><th scope="col">#</th><th scope="col">Domain</th><th scope="col">Site</th>
<th scope="col" class="num">In, hour</th><th scope="col" class="num">In, day</th>
<th scope="col" class="num">Unique</th><th scope="col" class="num">Out</th>
<th scope="col" class="num">Clicks</th><th scope="col" class="num">In, ever</th></tr></thead>
<tbody>
)";

constexpr std::string_view kTableClose = "</tbody>\n</table>\n";
constexpr std::string_view kSectionClose = "</section>\n";

const std::array<Design, 5>& designs() {
  static const std::array<Design, 5> kDesigns = {{
      {"index",
       "Top 50",
       "Top 50 of the day",
       "The partner sites that sent most visitors in the last 24 hours.",
       "16",
       "1",
       {},
       kTableOpen,
       {0, 3, kPodium},
       kTableHead,
       {3, 50, kTableRow},
       kTableClose},
      {"gallery",
       "Gallery",
       "Gallery of the week",
       "A look at the two dozen sites that were visited most this week.",
       "31",
       "2",
       {},
       "<section class=\"cards\">\n",
       kNoHead,
       "",
       {0, 24, kCard},
       kSectionClose},
      {"busy",
       "Busy now",
       "Busy right now",
       "Sites with at least 40 visitors this hour and 600 people today.",
       "1",
       "1",
       {"rin60=40", "uin24=600"},
       "<ol class=\"busy\" style=\"--max:%%rin60_000%%\">\n",
       kNoHead,
       "",
       {0, 40, kBusyRow},
       "</ol>\n"},
      {"outdoors",
       "Outdoors",
       "Out of doors",
       "Hiking, paddling and star gazing: our oldest friends in the open air, by visitors of all "
       "time.",
       "46",
       "1",
       {"group=" + std::string(kGroupName)},
       "<section class=\"entries\">\n",
       kNoHead,
       "",
       {0, 30, kGroupRow},
       kSectionClose},
      {"favourites",
       "Favourites",
       "Reader favourites",
       "Where visitors click most: clicks per hundred visitors, among sites with 600 visitors or "
       "more.",
       "23",
       "1",
       {"rin24=600", "cprod=20"},
       "<section class=\"tiles\">\n",
       kNoHead,
       "",
       {0, 24, kRatioTile},
       kSectionClose},
  }};
  return kDesigns;
}

std::string three_digits(std::size_t number) {
  std::string digits = std::to_string(number);
  return digits.insert(0, 3 - std::min<std::size_t>(3, digits.size()), '0');
}

void append_ranks(std::string& text, const RankedBlock& block) {
  for (std::size_t rank = block.first; rank < block.end; ++rank) {
    std::string item(block.pattern);
    replace_all(item, "NNN", three_digits(rank));
    replace_all(item, "{n}", std::to_string(rank + 1));
    text += item;
  }
}

std::string menu(std::string_view current, std::size_t designed) {
  std::string text;
  for (std::size_t i = 0; i < designed; ++i) {
    const Design& design = designs().at(i);
    text += "<a href=\"" + std::string(design.name) + ".html\"";
    if (design.name == current) text += " aria-current=\"page\"";
    text += ">" + std::string(design.menu) + "</a>\n";
  }
  return text;
}

std::string plain_name(std::size_t number) { return "list-" + three_digits(number); }

/// Links to the plain tables, on the first page only.
std::string plain_links(std::size_t designed, std::size_t count) {
  if (count <= designed) return "";
  std::string text = "<p class=\"more\">Further lists:\n";
  for (std::size_t number = designed + 1; number <= count; ++number) {
    text += "<a href=\"" + plain_name(number) + ".html\">" + std::to_string(number) + "</a>\n";
  }
  return text + "</p>\n";
}

constexpr std::string_view kSkeletonStart = R"(<tlxt>
For editors: lines between these two markers never reach the page. This template makes
{name}.html, ordered by value {order}. After a change, store its new check value
in d/tl/tl, or the page stays as it is (mode 1). A double percent sign always starts a tag.
</tlxt>
<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{heading} | Saturday List</title>
<link rel="stylesheet" href="style.css">
</head>
<body>
<header class="top"><a class="brand" href="index.html">Saturday List</a>
<nav>
{menu}</nav></header>
<main>
<h1>{heading}</h1>
<p class="lead">{lead}</p>
)";

constexpr std::string_view kSkeletonEnd = R"(</main>
<footer>{more}<p>Saturday List is an invented site; all of its partners and figures are made up.</p></footer>
</body>
</html>
)";

std::string fill(std::string_view pattern, const Design& design, const std::string& links,
                 const std::string& more) {
  std::string text(pattern);
  replace_all(text, "{name}", design.name);
  replace_all(text, "{order}", design.order_by);
  replace_all(text, "{heading}", design.heading);
  replace_all(text, "{lead}", design.lead);
  replace_all(text, "{menu}", links);
  replace_all(text, "{more}", more);
  return text;
}

Page make_page(const Design& design, const std::string& links, const std::string& more) {
  Page page;
  page.definition = {.template_name = std::string(design.name) + ".tpl",
                     .output_path = std::string(design.name) + ".html",
                     .order_by = std::string(design.order_by),
                     .mode = std::string(design.mode),
                     .check = ""};
  page.settings = design.settings;
  std::string& text = page.template_text;
  text = fill(kSkeletonStart, design, links, more);
  text += design.open;
  append_ranks(text, design.head);
  text += design.between;
  append_ranks(text, design.rows);
  text += design.close;
  text += fill(kSkeletonEnd, design, links, more);
  return page;
}

constexpr std::size_t kOrderByValues = 60;

Page make_plain_page(std::size_t number, const std::string& links) {
  const std::string name = plain_name(number);
  const std::string heading = "List " + std::to_string(number);
  // A step that has no divisor in common with 60 passes through all values before one comes again.
  const std::string order_by = std::to_string(number * 7 % kOrderByValues + 1);
  const std::string lead = "Partner sites ordered by value " + order_by + ".";
  Design design{name,
                "",
                heading,
                lead,
                order_by,
                "1",
                {},
                kPlainHead,
                kNoHead,
                "",
                {0, 100, kPlainRow},
                kTableClose};
  if (number % 3 == 0) design.settings.emplace_back("rin24=10");
  return make_page(design, links, "");
}

}  // namespace

std::vector<Page> make_pages(std::size_t count, std::size_t most_designed) {
  const std::size_t designed = std::min({count, designs().size(), most_designed});
  std::vector<Page> pages;
  pages.reserve(count);
  for (std::size_t i = 0; i < designed; ++i) {
    const Design& design = designs().at(i);
    const std::string more = i == 0 ? plain_links(designed, count) : "";
    pages.push_back(make_page(design, menu(design.name, designed), more));
  }
  for (std::size_t number = designed + 1; number <= count; ++number) {
    pages.push_back(make_plain_page(number, menu("", designed)));
  }
  return pages;
}

}  // namespace toplist::site
