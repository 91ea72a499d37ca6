#include "toplistctl/lib/report/site_report.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "toplistctl/lib/templates/template_walk.h"
#include "util/number.h"

namespace toplist::ctl {
namespace {

std::vector<Partner> partners_of(const SiteView& site) {
  std::vector<Partner> partners;
  for (const TradeRow& row : site.run.rows) partners.push_back({&row});
  for (std::size_t toplist = 0; toplist < site.toplists.size(); ++toplist) {
    for (Partner& partner : partners) partner.ranks.emplace_back();
    std::size_t rank = 0;
    for (const TradeRow* row : site.toplists[toplist].passing) {
      partners[static_cast<std::size_t>(row - site.run.rows.data())].ranks[toplist] = rank++;
    }
  }
  std::ranges::stable_sort(partners, std::ranges::greater(), [](const Partner& partner) {
    return partner.row->periods[kPeriod24].rin;
  });
  return partners;
}

SnapshotTotals totals_now(const SiteReport& report, Period period) {
  SnapshotTotals totals{report.now, 0, 0, 0, 0};
  for (const Partner& partner : report.partners) {
    const PeriodBlock& figures = partner.row->periods[period];
    totals.rin += figures.rin;
    totals.uin += figures.uin;
    totals.out += figures.out;
    totals.clk += figures.clk;
  }
  return totals;
}

Expected<void> add_totals(const History& history, Period period, std::int64_t now, Series& series) {
  const auto all = history.snapshots(series.first * series.slot_seconds, now);
  if (!all) return tl::unexpected(all.error());
  std::vector<Snapshot> last;  // of each slot
  for (const Snapshot& snapshot : *all) {
    const auto slot = [&series](const Snapshot& s) { return s.time / series.slot_seconds; };
    if (!last.empty() && slot(last.back()) == slot(snapshot)) last.pop_back();
    last.push_back(snapshot);
  }
  const auto totals = history.totals(last, period);
  if (!totals) return tl::unexpected(totals.error());
  for (const SnapshotTotals& sums : *totals) series.add(sums.time, {sums.rin, sums.out});
  return {};
}

/// What a span is compared with: the nearest snapshot that is at most half a span, or half a day,
/// away from its begin.
Expected<std::optional<Snapshot>> span_before(const History& history, const Span& span,
                                              std::int64_t now) {
  return history.nearest(now - span.seconds,
                         std::min(span.seconds / 2, std::int64_t{kSecondsPerDay / 2}));
}

Expected<void> add_spans(const History& history, SiteReport& report) {
  for (Span& span : report.spans) {
    const auto before = span_before(history, span, report.now);
    if (!before) return tl::unexpected(before.error());
    if (!*before) continue;
    const auto totals = history.totals({&**before, 1}, span.period);
    if (!totals) return tl::unexpected(totals.error());
    span.before = totals->front();
  }
  return {};
}

Expected<void> add_last_week(const History& history, SiteReport& report) {
  const Span& week = report.spans.back();
  const auto before = span_before(history, week, report.now);
  if (!before) return tl::unexpected(before.error());
  if (!*before) return {};
  const auto figures = history.figures(**before, week.period);
  if (!figures) return tl::unexpected(figures.error());
  std::unordered_map<std::int32_t, std::int32_t> rin;
  for (const RecordedTrade& trade : *figures) rin.emplace(trade.id, trade.figures.rin);
  report.knows_last_week = true;
  for (Partner& partner : report.partners) {
    const auto found = rin.find(parse_int32(partner.row->id));
    partner.is_new = found == rin.end();
    if (!partner.is_new) partner.week_before = found->second;
  }
  return {};
}

Expected<void> add_partner_days(const History& history, SiteReport& report) {
  const std::size_t count = std::min(report.top, report.partners.size());
  for (Partner& partner : std::span(report.partners).first(count)) {
    partner.days.emplace(kSecondsPerDay, report.days.slots.size(), report.now);
    const auto points =
        history.series(parse_int32(partner.row->id), kPeriod24,
                       partner.days->first * partner.days->slot_seconds, report.now);
    if (!points) return tl::unexpected(points.error());
    for (const SeriesPoint& point : *points) partner.days->add(point.time, {point.rin, point.out});
  }
  return {};
}

Expected<void> add_history(SiteReport& report, const std::string& path) {
  const auto opened = History::open(path.empty() ? kHistoryPath : path);
  if (!opened) return tl::unexpected(opened.error());
  const std::optional<History>& history = *opened;
  report.has_history = history.has_value();
  if (!history && path.empty()) return {};
  if (!history) return tl::unexpected(Error{"cannot read", path, 0, "No snapshot is in it."});
  return add_totals(*history, kPeriod60, report.now, report.hours)
      .and_then([&] { return add_totals(*history, kPeriod24, report.now, report.days); })
      .and_then([&] { return add_spans(*history, report); })
      .and_then([&] { return add_last_week(*history, report); })
      .and_then([&] { return add_partner_days(*history, report); })
      .map([&] {
        // The last slot is not over: what counts in it are the figures of now.
        const auto& [hour, day, week] = report.spans;
        report.hours.add(report.now, {hour.now.rin, hour.now.out});
        report.days.add(report.now, {day.now.rin, day.now.out});
        for (Partner& partner : report.partners) {
          const PeriodBlock& figures = partner.row->periods[kPeriod24];
          if (partner.days) partner.days->add(report.now, {figures.rin, figures.out});
        }
      });
}

}  // namespace

Series::Series(std::int64_t seconds, std::size_t count, std::int64_t now)
    : slot_seconds(seconds),
      first(now / seconds - static_cast<std::int64_t>(count) + 1),
      slots(count) {}

void Series::add(std::int64_t time, const Traffic& traffic) {
  const auto slot = static_cast<std::size_t>(time / slot_seconds - first);
  if (slot < slots.size()) slots[slot] = traffic;
}

std::int64_t Partner::change() const {
  return week_before ? std::int64_t{row->periods[kPeriod07].rin} - *week_before : 0;
}

bool SiteReport::is_shown(const Partner& partner, std::size_t toplist) const {
  const auto& rank = partner.ranks[toplist];
  return rank && site->toplists[toplist].next_run.is_built() &&
         places[toplist].contains(static_cast<std::int32_t>(*rank));
}

Expected<SiteReport> make_report(const SiteView& site, const ReportOptions& options) {
  SiteReport report{.site = &site,
                    .now = options.now,
                    .top = options.top,
                    .status = status_of(site, {}, options.now),
                    .last_day = status_of(site, {.log_span = kDaySeconds}, options.now).log_lines};
  report.partners = partners_of(site);
  for (const ToplistView& toplist : site.toplists) report.places.push_back(ranks_named(toplist));
  for (Span& span : report.spans) span.now = totals_now(report, span.period);
  return add_history(report, options.history).map([&] { return std::move(report); });
}

}  // namespace toplist::ctl
