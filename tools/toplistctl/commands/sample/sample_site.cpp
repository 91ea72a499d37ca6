#include "toplistctl/commands/sample/sample_site.h"

#include <array>
#include <map>
#include <string_view>
#include <vector>

#include "run/statistics.h"
#include "toplist/filters.h"
#include "toplistctl/commands/sample/invented_trades.h"
#include "toplistctl/commands/sample/partner_pages.h"
#include "toplistctl/commands/sample/sample_pages.h"
#include "toplistctl/lib/formats/site_writer.h"
#include "toplistctl/lib/new_site/own_folder.h"

namespace toplist::site {
namespace {

constexpr OwnFolderKind kSampleSite{".sample-site", "a sample site"};
constexpr OwnFolderKind kPartnerPages{".sample-partners", "a folder of a sample's partners"};

void write_history(SiteFolder& site, const Trade& trade, const std::vector<PeriodBlock>& days) {
  std::string file;
  std::int32_t number = 0;
  for (const PeriodBlock& day : days) append_history(file, ++number, day);
  site.write("d/h/" + trade.domain + ".his", file);
}

void write_statistics(SiteFolder& site, const std::vector<Trade>& trades, Random& random) {
  std::string sum;
  for (const Trade& trade : trades) {
    const Figures figures = invent_figures(trade, random);
    append_sum(sum, {trade.id, figures.recent});
    write_history(site, trade, figures.days);
  }
  site.write(kSumPath, sum);
}

void write_database(SiteFolder& site, const std::vector<Trade>& trades) {
  std::string file;
  file.reserve(trades.size() * sizeof(TradeRecord));
  for (const Trade& trade : trades) {
    append_trade(
        file, make_trade(trade.id, trade.domain, "http://www." + trade.domain + "/", trade.status));
  }
  site.write(kTradesPath, file);
}

std::string thumbnail_path(const Trade& trade) { return "l/thumbs/" + trade.domain + ".jpg"; }

void write_columns(SiteFolder& site, const std::vector<Trade>& trades) {
  constexpr std::array<std::string_view, 6> kNames = {"title",    "description", "picture",
                                                      "category", "language",    "since"};
  std::string file;
  append_column_header(file, kNames);
  for (const Trade& trade : trades) {
    const Partner& partner = *trade.partner;
    const std::string picture = thumbnail_path(trade);
    const std::array<std::string_view, kNames.size()> values = {
        partner.title, partner.description, picture,
        partner.topic, partner.language,    partner.since};
    append_columns(file, trade.domain, values);
  }
  site.write(kExtraColumnsPath, file);
}

void write_groups(SiteFolder& site, const std::vector<Trade>& trades) {
  std::map<std::string_view, std::vector<std::int32_t>> groups;
  for (const Trade& trade : trades) {
    if (!trade.partner->group.empty()) groups[trade.partner->group].push_back(trade.id);
  }
  for (const auto& [name, members] : groups) {
    site.write("d/gr/" + std::string(name), encode_group(name, members));
  }
}

/// The first trade of each partner gets its picture, the others further names of the same file, so
/// that a site of many thousands costs little time and space.
void write_thumbnails(SiteFolder& site, const std::vector<Trade>& trades) {
  for (std::size_t i = 0; i < trades.size(); ++i) {
    const std::string_view picture = partner_picture(*trades[i].partner);
    const std::string path = thumbnail_path(trades[i]);
    if (i < partner_count()) {
      site.write(path, picture);
    } else {
      site.link(thumbnail_path(trades[i % partner_count()]), path, picture);
    }
  }
}

std::string write_site(const std::filesystem::path& directory, const SampleOptions& options) {
  SiteFolder site = begin_own_folder(directory, kSampleSite);
  for (const char* folder : kSiteFolders) site.make_folder(folder);
  Random random(options.seed);
  const std::vector<Trade> trades = invent_trades(options.trades, random);
  write_database(site, trades);
  write_statistics(site, trades, random);
  write_columns(site, trades);
  write_groups(site, trades);
  site.write(make_pages(options));
  if (options.thumbnails == Thumbnails::ready) write_thumbnails(site, trades);
  return finish_own_folder(site, kSampleSite);
}

std::string write_partners(const SampleOptions& options) {
  SiteFolder folder = begin_own_folder(options.partner_pages, kPartnerPages);
  write_partner_pages(folder, options.trades);
  return finish_own_folder(folder, kPartnerPages);
}

}  // namespace

std::string write_sample_site(const std::filesystem::path& directory,
                              const SampleOptions& options) {
  const bool harvested = options.thumbnails == Thumbnails::harvested;
  std::string problem = why_not(directory, kSampleSite, options.replace);
  if (problem.empty() && harvested) {
    problem = why_not(options.partner_pages, kPartnerPages, options.replace);
  }
  if (problem.empty()) problem = write_site(directory, options);
  if (problem.empty() && harvested) problem = write_partners(options);
  return problem;
}

}  // namespace toplist::site
