#include "support/site_generator.h"

#include <array>
#include <cmath>
#include <fstream>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "run/statistics.h"
#include "support/random.h"
#include "toplistctl/lib/formats/site_writer.h"
#include "util/sha1.h"

namespace toplist::test {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kFirstId = 101;
constexpr std::size_t kDays = 30;
constexpr std::size_t kOrderByValues = 60;
constexpr int kRanks = 100;
/// Visitors per day that the best trade sends, and how fast the others fall behind it.
constexpr double kBestDay = 4200.0;
constexpr double kFallOff = 0.55;

void write(const fs::path& path, std::string_view bytes) {
  std::ofstream file;
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file.open(path, std::ios::binary);
  file << bytes << std::flush;
}

std::string domain_of(std::size_t trade) {
  constexpr std::array kWords{"alpine-trails",  "chess-nook",  "sourdough-diary",
                              "lens-and-light", "rose-ledger", "kitchen-garden-club"};
  return std::string(kWords[trade % kWords.size()]) + "-" + std::to_string(trade) + ".example";
}

std::int32_t status_of(std::size_t trade) {
  if (trade % 16 != 15) return 1;
  return trade % 32 == 15 ? 0 : 2;
}

/// Habits of a trade's visitors; they hold over all periods.
struct Habits {
  double unique, returned, clicks, clicked_out, traded;
};

PeriodBlock draw_period(double visitors, const Habits& habits, Random& random) {
  const auto whole = [](double number) { return static_cast<std::int32_t>(std::lround(number)); };
  const auto count = [&](double share) {
    return whole(visitors * share * random.between(0.9, 1.1));
  };
  PeriodBlock block;
  block.rin = whole(visitors * random.between(0.8, 1.2));
  block.uin = whole(block.rin * habits.unique);
  block.out = count(habits.returned);
  block.clk = count(habits.clicks);
  block.cef = count(habits.unique * habits.clicked_out);
  block.ctt = count(habits.returned * habits.traded);
  block.ctg = count(habits.traded);
  block.rec = count(habits.clicks * habits.traded);
  for (std::int32_t& value : block.further) value = count(random.unit());
  return block;
}

/// Visitors per day of each trade; their order is random.
std::vector<double> draw_visitors(std::size_t trades, Random& random) {
  std::vector<std::size_t> places(trades);
  std::iota(places.begin(), places.end(), 1);
  for (std::size_t i = trades; i > 1; --i) std::swap(places[i - 1], places[random.below(i)]);
  std::vector<double> visitors;
  visitors.reserve(trades);
  for (const std::size_t place : places) {
    visitors.push_back(kBestDay * std::pow(static_cast<double>(place), -kFallOff));
  }
  return visitors;
}

void write_statistics(const fs::path& site, std::size_t trades, Random& random) {
  const std::vector<double> visitors = draw_visitors(trades, random);
  std::string sum;
  for (std::size_t i = 0; i < trades; ++i) {
    const Habits habits{.unique = random.between(0.6, 0.95),
                        .returned = random.between(0.6, 1.4),
                        .clicks = random.between(0.1, 0.9),
                        .clicked_out = random.between(0.2, 0.6),
                        .traded = random.between(0.1, 0.5)};
    const auto period = [&](double days) {
      return draw_period(visitors[i] * days, habits, random);
    };
    ctl::append_sum(
        sum, {kFirstId + static_cast<std::int32_t>(i), {period(1.0 / 24), period(1), period(7)}});
    std::string history;
    for (std::size_t day = 1; day <= kDays; ++day) {
      ctl::append_history(history, static_cast<std::int32_t>(day), period(1));
    }
    write(site / history_path(domain_of(i)), history);
  }
  write(site / kSumPath, sum);
}

void write_trades(const fs::path& site, std::size_t trades) {
  constexpr std::array<std::string_view, 6> kNames{"title",    "description", "picture",
                                                   "category", "language",    "since"};
  std::string index, columns;
  ctl::append_column_header(columns, kNames);
  for (std::size_t i = 0; i < trades; ++i) {
    const std::string domain = domain_of(i);
    const std::string number = std::to_string(i);
    ctl::append_trade(index, ctl::make_trade(kFirstId + static_cast<std::int32_t>(i), domain,
                                             "http://www." + domain + "/", status_of(i)));
    const std::string title = "Partner " + number + ";Partner " + number + ": what is new";
    const std::string picture = "l/thumbs/" + domain + ".jpg";
    ctl::append_columns(columns, domain,
                        std::array<std::string_view, kNames.size()>{
                            title, "Day walks and long routes, with maps to print.", picture,
                            i % 3 == 0 ? "Outdoors" : "Kitchen", "English", "2007"});
  }
  write(site / kTradesPath, index);
  write(site / kExtraColumnsPath, columns);
}

/// The digits of a rank as tags have them: "007".
std::string rank_digits(int rank) {
  const std::string digits = std::to_string(rank);
  return std::string(3 - digits.size(), '0') + digits;
}

std::string list_template(std::size_t number) {
  std::string text = "<!doctype html>\n<html lang=\"en\">\n<head><title>List " +
                     std::to_string(number) +
                     "</title></head>\n<body>\n<table class=\"ranked plain\">\n";
  for (int rank = 0; rank < kRanks; ++rank) {
    const auto tag = [digits = rank_digits(rank)](const char* name) {
      return "%%" + std::string(name) + "_" + digits + "%%";
    };
    text += "<tr data-id=\"" + tag("tid") + "\"><td class=\"rank\">" + std::to_string(rank + 1) +
            "</td><td>" + tag("dom") + "</td>\n<td><a href=\"out.html" + tag("lnk") + "\">" +
            tag("tit") + "</a></td>\n";
    for (const char* figure : {"rin60", "rin24", "uin24", "out24", "clk24", "rin99"}) {
      text += "<td class=\"num\">" + tag(figure) + "</td>";
    }
    text += "</tr>\n";
  }
  return text + "</table>\n</body>\n</html>\n";
}

void write_toplists(const fs::path& site, std::size_t toplists) {
  std::string definitions, settings;
  for (std::size_t number = 1; number <= toplists; ++number) {
    const std::string name = "list-" + std::to_string(number);
    const std::string file = name + ".tpl";
    const fs::path path = site / "d/tl" / file;
    write(path, list_template(number));
    // A step that has no divisor in common with 60 passes through all values before one repeats.
    const std::string order_by = std::to_string(number * 7 % kOrderByValues + 1);
    ctl::append_definition(definitions, {.template_name = file,
                                         .output_path = name + ".html",
                                         .order_by = order_by,
                                         .check = sha1_file_hex(path)});
    if (number % 3 == 0) ctl::append_setting(settings, file, "rin24=10");
  }
  write(site / "d/tl/tl", definitions);
  write(site / "d/tl/tl.ext", settings);
}

}  // namespace

void write_site(const fs::path& folder, const SiteSize& size) {
  for (const char* name : {"d/t", "d/h", "d/tl", "d/gr", "l/sys/net", "l/thumbs"}) {
    fs::create_directories(folder / name);
  }
  write(folder / "d/tl/vantaig", ctl::encode_harvest_file({}));
  Random random(size.seed);
  write_trades(folder, size.trades);
  write_statistics(folder, size.trades, random);
  write_toplists(folder, size.toplists);
}

}  // namespace toplist::test
