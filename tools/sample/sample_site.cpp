#include "sample/sample_site.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sample/catalogue.h"
#include "sample/pages.h"
#include "sample/picture.h"
#include "sample/random.h"
#include "sample/scene.h"
#include "sample/site_folder.h"
#include "sample/site_writer.h"

namespace toplist::site {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kThumbnailFolder = "l/thumbs/";
constexpr std::array kFolders = {"d/t", "d/h", "d/tl", "d/gr", "l/sys", "l/sys/net", "l/thumbs"};
constexpr std::size_t kDistinctPictures = 60;
constexpr std::int32_t kFirstTradeId = 101;
constexpr std::int32_t kHistoryDays = 30;
/// Visitors per day that the best trade of a site sends, and how fast the others fall behind it.
constexpr double kBestDay = 4200.0;
constexpr double kFallOff = 0.55;

/// An invented trade; everything about it but its figures.
struct Trade {
  std::int32_t id;
  std::int32_t status;
  Theme theme;
  std::string domain;
  double daily_visitors;
};

std::int32_t whole(double number) { return static_cast<std::int32_t>(std::lround(number)); }

/// The places that the trades take among each other, in a random order: trade -> place.
std::vector<std::size_t> draw_places(std::size_t count, Random& random) {
  std::vector<std::size_t> places(count);
  std::iota(places.begin(), places.end(), 0);
  for (std::size_t i = count; i > 1; --i) std::swap(places[i - 1], places[random.below(i)]);
  return places;
}

std::int32_t status_of(std::size_t index) {
  if (index % 16 != 15) return 1;
  return index % 32 == 15 ? 0 : 2;
}

std::vector<Trade> invent_trades(std::size_t count, Random& random) {
  const std::vector<std::size_t> places = draw_places(count, random);
  std::vector<Trade> trades;
  trades.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const double place = static_cast<double>(places[i]) + 1.0;
    trades.push_back({kFirstTradeId + static_cast<std::int32_t>(i), status_of(i),
                      catalogue_entry(i).theme, catalogue_domain(i),
                      kBestDay * std::pow(place, -kFallOff) * random.between(0.85, 1.15)});
  }
  return trades;
}

/// Habits of a trade's visitors; they hold over all periods.
struct Habits {
  double unique, returned, clicks, clicked_out, traded;
};

Habits draw_habits(Random& random) {
  return {.unique = random.between(0.6, 0.95),
          .returned = random.between(0.6, 1.4),
          .clicks = random.between(0.1, 0.9),
          .clicked_out = random.between(0.2, 0.6),
          .traded = random.between(0.1, 0.5)};
}

PeriodBlock draw_period(double visitors, const Habits& habits, Random& random) {
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

void write_history(SiteFolder& site, const Trade& trade, const Habits& habits, Random& random) {
  std::string file;
  for (std::int32_t day = 1; day <= kHistoryDays; ++day) {
    append_history(file, day, draw_period(trade.daily_visitors, habits, random));
  }
  site.write("d/h/" + trade.domain + ".his", file);
}

void write_statistics(SiteFolder& site, const std::vector<Trade>& trades, Random& random) {
  std::string sum;
  for (const Trade& trade : trades) {
    const Habits habits = draw_habits(random);
    const double day = trade.daily_visitors;
    append_sum(sum, {trade.id,
                     {draw_period(day / 24, habits, random), draw_period(day, habits, random),
                      draw_period(day * 7, habits, random)}});
    write_history(site, trade, habits, random);
  }
  site.write("d/t/sum", sum);
}

void write_database(SiteFolder& site, const std::vector<Trade>& trades) {
  std::string file;
  file.reserve(trades.size() * sizeof(TradeRecord));
  for (const Trade& trade : trades) {
    append_trade(
        file, make_trade(trade.id, trade.domain, "http://www." + trade.domain + "/", trade.status));
  }
  site.write("d/t/index", file);
}

void write_columns(SiteFolder& site, const std::vector<Trade>& trades, Random& random) {
  constexpr std::array<std::string_view, 6> kNames = {"title",    "description", "picture",
                                                      "category", "language",    "since"};
  constexpr std::array<std::string_view, 6> kLanguages = {"English", "English", "English",
                                                          "Deutsch", "Dansk",   "Nederlands"};
  std::string file;
  append_column_header(file, kNames);
  for (std::size_t i = 0; i < trades.size(); ++i) {
    const CatalogueEntry& entry = catalogue_entry(i);
    const std::string picture = std::string(kThumbnailFolder) + trades[i].domain + ".jpg";
    const std::string since = std::to_string(2003 + random.below(19));
    const std::array<std::string_view, 6> values = {entry.title,
                                                    entry.description,
                                                    picture,
                                                    theme_name(entry.theme),
                                                    kLanguages.at(random.below(kLanguages.size())),
                                                    since};
    append_columns(file, trades[i].domain, values);
  }
  site.write("d/tl/tl.a1", file);
}

bool is_outdoors(Theme theme) {
  return theme == Theme::outdoors || theme == Theme::water || theme == Theme::sky;
}

void write_group(SiteFolder& site, const std::vector<Trade>& trades) {
  std::vector<std::int32_t> members;
  for (const Trade& trade : trades) {
    if (is_outdoors(trade.theme)) members.push_back(trade.id);
  }
  site.write("d/gr/" + std::string(kGroupName), encode_group(kGroupName, members));
}

void write_toplists(SiteFolder& site, const SampleOptions& options) {
  std::string definitions;
  std::string settings;
  for (Page& page : make_pages(options.toplists, options.most_designed)) {
    const std::string& name = page.definition.template_name;
    site.write("d/tl/" + name, page.template_text);
    page.definition.check = site.check_value("d/tl/" + name);
    append_definition(definitions, page.definition);
    for (const std::string& setting : page.settings) append_setting(settings, name, setting);
  }
  site.write("d/tl/tl", definitions);
  site.write("d/tl/tl.ext", settings);
  site.write("style.css", style_sheet());
}

std::string thumbnail_path(const Trade& trade) {
  return std::string(kThumbnailFolder) + trade.domain + ".jpg";
}

/// The first trades get pictures of their own, the others further names of the same files, so that
/// a site of many thousands costs little time and space. The old file goes first: writing to it
/// would change what its other names show.
void write_thumbnails(SiteFolder& site, const std::vector<Trade>& trades, Random& random) {
  std::vector<std::string> pictures;
  for (std::size_t i = 0; i < trades.size(); ++i) {
    const std::string path = thumbnail_path(trades[i]);
    const std::size_t original = i % kDistinctPictures;
    if (i == original) pictures.push_back(encode_picture(make_scene(trades[i].theme, random)));
    site.remove(path);
    if (i != original && site.link(thumbnail_path(trades[original]), path)) continue;
    site.write(path, pictures[original]);
  }
}

/// A harvest goes by curl, which can be sent to a proxy on this machine. Its pictures have the
/// right size already: the image tool is the shell's command that does nothing.
HarvestFile harvest_file(Thumbnails thumbnails) {
  const bool harvested = thumbnails == Thumbnails::harvested;
  return {.thumb_dir = std::string(kThumbnailFolder),
          .image_tool = harvested ? ":" : "convert",
          .image_tool_args = harvested ? "" : "-resize 240x180",
          .unused = "0",
          .fetch_method = harvested ? "3" : "0",
          .thumbnail_optional = thumbnails == Thumbnails::none ? "1" : "0",
          .harvest = harvested ? "1" : "0"};
}

constexpr std::string_view kMarkerText =
    "A sample site of invented trades. Without this file it is not written over.\n";

}  // namespace

bool may_hold_sample_site(const fs::path& directory) {
  std::error_code error;
  if (!fs::exists(directory, error)) return !error;
  if (!fs::is_directory(directory, error)) return false;
  return fs::exists(directory / kSampleMarker, error) || (fs::is_empty(directory, error) && !error);
}

fs::path write_sample_site(const fs::path& directory, const SampleOptions& options) {
  SiteFolder site(directory);
  site.make_folder("");
  site.write(kSampleMarker, kMarkerText);
  for (const char* folder : kFolders) site.make_folder(folder);
  Random random(options.seed);
  const std::vector<Trade> trades = invent_trades(options.trades, random);
  write_database(site, trades);
  write_statistics(site, trades, random);
  write_columns(site, trades, random);
  write_group(site, trades);
  write_toplists(site, options);
  site.write("d/tl/vantaig", encode_harvest_file(harvest_file(options.thumbnails)));
  if (options.thumbnails == Thumbnails::ready) write_thumbnails(site, trades, random);
  return site.failed();
}

}  // namespace toplist::site
