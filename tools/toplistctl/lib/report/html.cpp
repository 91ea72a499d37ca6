#include "toplistctl/lib/report/html.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <iterator>

#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/output/value.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

constexpr int kChartHeight = 200;  ///< in units of the drawing, which is stretched to its box
constexpr int kSparkHeight = 20;

/// The first one first to escape, and last to decode.
constexpr std::pair<std::string_view, std::string_view> kEntities[] = {
    {"&", "&amp;"}, {"<", "&lt;"}, {">", "&gt;"}, {"\"", "&quot;"}, {"'", "&#39;"}};

using Member = std::int64_t Traffic::*;

/// Figures may be negative; drawn they are not.
int height_of(std::int64_t value, std::int64_t most, int height) {
  const double part = static_cast<double>(std::max<std::int64_t>(value, 0)) /
                      static_cast<double>(std::max<std::int64_t>(most, 1));
  return static_cast<int>(part * height + 0.5);
}

std::int64_t most_of(const Series& series) {
  std::int64_t most = 0;
  for (const auto& slot : series.slots) {
    if (slot) most = std::max({most, slot->in, slot->out});
  }
  return most;
}

/// The path of a line that is broken where nothing was recorded. With an area, each piece of it is
/// closed along the bottom. A slot between two empty ones becomes a dot.
std::string path(const Series& series, Member member, std::int64_t most, int height, bool area) {
  std::string d;
  std::size_t begin = 0;
  const auto& slots = series.slots;
  for (std::size_t i = 0; i < slots.size(); ++i) {
    if (!slots[i]) continue;
    const bool is_first = i == 0 || !slots[i - 1];
    const bool is_last = i + 1 == slots.size() || !slots[i + 1];
    if (is_first) begin = i;
    const int y = height - height_of((*slots[i]).*member, most, height);
    if (is_first && area) d += fmt::format("M{} {}", i, height);
    d += fmt::format("{}{} {}", is_first && !area ? 'M' : 'L', i, y);
    if (is_last && area) d += fmt::format("L{} {}z", i, height);
    if (is_last && !area && begin == i) d += "h0";
  }
  return d;
}

/// What lies between lines of a scale from 0 to `most`: 1, 2 or 5 times a power of ten.
std::int64_t step_of(std::int64_t most) {
  constexpr std::int64_t kLines = 4;
  std::int64_t step = 1;
  for (int i = 0; step * kLines < most; ++i) step = i % 3 == 1 ? step / 2 * 5 : step * 2;
  return step;
}

/// The time that stands for a slot. Days are those of UTC: their middle has the same date nearly
/// everywhere.
std::int64_t time_of(const Series& series, std::size_t slot) {
  return (series.first + static_cast<std::int64_t>(slot)) * series.slot_seconds +
         (series.slot_seconds == kSecondsPerDay ? kSecondsPerDay / 2 : 0);
}

std::string slot_text(const Series& series, std::size_t slot) {
  return time_text(time_of(series, slot),
                   series.slot_seconds == kSecondsPerDay ? "%-d %b" : "%a %H:%M");
}

/// What is written below a slot: each midnight and noon, or each Monday.
std::string tick_of(const Series& series, std::size_t slot) {
  const std::int64_t time = time_of(series, slot);
  if (series.slot_seconds == kSecondsPerDay) {
    return time_text(time, "%a") == "Mon" ? time_text(time, "%-d %b") : "";
  }
  const std::string hour = time_text(time, "%H");
  return hour == "00" ? time_text(time, "%a %-d") : hour == "12" ? time_text(time, "%H:%M") : "";
}

/// Where the plot lies in the picture, from the top, in percent of its height.
constexpr double kPlotTop = 8;
constexpr double kPlotHeight = 78;

/// Lines of the picture, and what is written over the plot.
struct Axes {
  std::string lines, texts;
};

void add_scale(Axes& axes, std::int64_t top, std::int64_t step) {
  for (std::int64_t value = 0; value <= top; value += step) {
    const double part = static_cast<double>(value) / static_cast<double>(top);
    const double y = kPlotTop + kPlotHeight * (1 - part);
    axes.lines += fmt::format("<line x2=\"100%\" y1=\"{0:.1f}%\" y2=\"{0:.1f}%\"/>", y);
    axes.texts +=
        fmt::format("<text x=\"2\" y=\"{:.1f}%\" dy=\"-4\">{}</text>", y, number_text(value));
  }
}

void add_ticks(Axes& axes, const Series& series) {
  for (std::size_t i = 0; i < series.slots.size(); ++i) {
    const std::string tick = tick_of(series, i);
    if (tick.empty()) continue;
    const double x =
        100 * (static_cast<double>(i) + 0.5) / static_cast<double>(series.slots.size());
    axes.lines += fmt::format("<line x1=\"{0:.1f}%\" x2=\"{0:.1f}%\" y1=\"{1}%\" y2=\"{2}%\"/>", x,
                              kPlotTop, kPlotTop + kPlotHeight);
    if (x < 6 || x > 94) continue;  // would reach out of the picture
    axes.texts += fmt::format("<text class=\"x\" x=\"{:.1f}%\" y=\"97%\">{}</text>", x, tick);
  }
}

std::string gaps(const Series& series) {
  std::string svg;
  const auto& slots = series.slots;
  for (std::size_t i = 0; i < slots.size(); ++i) {
    if (slots[i]) continue;
    const std::size_t begin = i;
    while (i + 1 < slots.size() && !slots[i + 1]) ++i;
    svg += fmt::format("<rect class=\"gap\" x=\"{}\" width=\"{}\" height=\"{}\"/>",
                       static_cast<double>(begin) - 0.5, i - begin + 1, kChartHeight);
  }
  return svg;
}

/// "In: 12 (Sat 03:00) to 80 (Sun 15:00)."
std::string range_text(const Series& series, std::string_view name, Member member) {
  std::optional<std::size_t> least, most;
  const auto value = [&](std::size_t slot) { return (*series.slots[slot]).*member; };
  for (std::size_t i = 0; i < series.slots.size(); ++i) {
    if (!series.slots[i]) continue;
    if (!least || value(i) < value(*least)) least = i;
    if (!most || value(i) > value(*most)) most = i;
  }
  if (!least) return "";
  return fmt::format(" {}: from {} ({}) to {} ({}).", name, number_text(value(*least)),
                     slot_text(series, *least), number_text(value(*most)),
                     slot_text(series, *most));
}

std::string summary(const Series& series) {
  const auto recorded =
      std::ranges::count_if(series.slots, [](const auto& slot) { return slot.has_value(); });
  return fmt::format("{} of {} {} recorded.{}{}", recorded, series.slots.size(),
                     series.slot_seconds == kSecondsPerDay ? "days" : "hours",
                     range_text(series, "In", &Traffic::in),
                     range_text(series, "Out", &Traffic::out));
}

}  // namespace

std::string html_text(std::string_view text) {
  constexpr std::size_t kMostBytes = 200;
  std::string html = printable(as_utf8(text.substr(0, 2 * kMostBytes)));
  if (html.size() > kMostBytes) {
    std::size_t end = kMostBytes;
    while ((static_cast<unsigned char>(html[end]) & 0xC0U) == 0x80U) --end;
    html.replace(end, std::string::npos, "…");
  }
  for (const auto& [character, entity] : kEntities) replace_all(html, character, entity);
  return html;
}

std::string decoded(std::string_view html) {
  std::string text(html);
  for (auto each = std::rbegin(kEntities); each != std::rend(kEntities); ++each) {
    replace_all(text, each->second.substr(0, each->second.size() - 1), each->first);
  }
  return text;
}

std::string base64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t j = i; j < i + 3; ++j) {
      group = group << 8U | (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0U);
    }
    for (std::size_t j = 0; j < 4; ++j) {
      text += i + j > bytes.size() ? '=' : kDigits[group >> (18 - 6 * j) & 63U];
    }
  }
  return text;
}

std::string number_text(std::int64_t number) {
  const auto size = static_cast<std::size_t>(number < 0 ? -number : number);
  return (number < 0 ? "−" : "") + grouped(size);
}

std::string time_text(std::int64_t time, const char* format) {
  const std::time_t value = time;
  std::tm local{};
  ::localtime_r(&value, &local);
  std::array<char, 64> text{};
  std::strftime(text.data(), text.size(), format, &local);
  return text.data();
}

std::string chart(const Series& series, std::string_view id, std::string_view what,
                  std::string_view unit) {
  const std::int64_t most = most_of(series);
  const std::int64_t step = step_of(most);
  const std::int64_t top = std::max(step, (most + step - 1) / step * step);
  Axes axes;
  add_scale(axes, top, step);
  add_ticks(axes, series);
  const auto line = [&](const char* name, Member member, bool area) {
    return fmt::format("<path class=\"{}\" d=\"{}\"/>", name,
                       path(series, member, top, kChartHeight, area));
  };
  return fmt::format(
      "<figure><figcaption>{1} <small>{2}</small></figcaption>"
      "<svg class=\"chart\" role=\"img\" aria-labelledby=\"{0}-t {0}-d\">"
      "<title id=\"{0}-t\">{1}</title><desc id=\"{0}-d\">{3}</desc>{4}"
      "<svg y=\"{6}%\" width=\"100%\" height=\"{7}%\" viewBox=\"-.5 0 {8} {9}\" "
      "preserveAspectRatio=\"none\">{10}{11}{12}{13}</svg>{5}</svg><p>{3}</p></figure>",
      id, what, unit, summary(series), axes.lines, axes.texts, kPlotTop, kPlotHeight,
      series.slots.size(), kChartHeight, gaps(series), line("area", &Traffic::in, true),
      line("in", &Traffic::in, false), line("out", &Traffic::out, false));
}

std::string sparkline(const Series& series) {
  return fmt::format(
      "<svg class=\"spark\" role=\"img\" aria-label=\"{}\" viewBox=\"-.5 -1 {} {}\" "
      "preserveAspectRatio=\"none\"><path d=\"{}\"/></svg>",
      summary(series), series.slots.size(), kSparkHeight + 2,
      path(series, &Traffic::in, most_of(series), kSparkHeight, false));
}

std::string bars(const Traffic& traffic, std::int64_t most) {
  constexpr int kWidth = 200;
  return fmt::format(
      "<svg class=\"bars\" viewBox=\"0 0 {} 9\" preserveAspectRatio=\"none\" aria-hidden=\"true\">"
      "<rect class=\"in\" width=\"{}\" height=\"4\"/><rect class=\"out\" y=\"5\" width=\"{}\" "
      "height=\"4\"/></svg>",
      kWidth, height_of(traffic.in, most, kWidth), height_of(traffic.out, most, kWidth));
}

}  // namespace toplist::ctl
