// The examples of the manual page toplist-site(5) mean to the readers what the page says of them.

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "harvest/fetch_method.h"
#include "harvest/harvest_config.h"
#include "harvest/trade_harvest.h"
#include "render/render.h"
#include "run/statistics.h"
#include "run/sys_log.h"
#include "support/rows.h"
#include "support/temp_dir.h"
#include "toplist/alternatives.h"
#include "toplist/definitions.h"
#include "toplist/filters.h"
#include "toplist/ranking.h"
#include "util/fields.h"
#include "util/file.h"
#include "util/sha1.h"

namespace toplist {
namespace {

using test::make_row;

/// What stands under one "## " heading of the page.
struct Section {
  std::string prose;                  ///< in one line
  std::vector<std::string> examples;  ///< the literal blocks, each line ended by a line feed
};

Section read_section(const std::string& name) {
  FileBuffer page;
  EXPECT_TRUE(page.read(TOPLIST_SITE_MANUAL));
  Section section;
  bool here = false;
  bool literal = false;
  FieldReader lines(page.text(), kLineSeparator);
  for (std::string_view line; lines.next(line);) {
    if (line == "```") {
      literal = !literal;
      if (here && literal) section.examples.emplace_back();
    } else if (!literal && line.starts_with('#')) {
      here = line == "## " + name;
    } else if (here) {
      std::string& text = literal ? section.examples.back() : section.prose;
      text.append(line) += literal ? '\n' : ' ';
    }
  }
  section.examples.resize(2);  // no section has more, and a missing one reads as empty
  return section;
}

std::string example(const std::string& name) { return read_section(name).examples[0]; }

/// Compares the row with every "rin60 is 9" or "rin99 is 1 + 2 = 3" that the page says.
void expect_figures_as_said(const std::string& prose, TradeRow row) {
  const std::regex said(R"(([a-z]{3}\d\d) is (?:[\d +]+= )?(\d+))");
  int count = 0;
  for (std::sregex_iterator i(prose.begin(), prose.end(), said), end; i != end; ++i, ++count) {
    const std::int32_t* figure = test::find_counter(row, (*i)[1].str());
    ASSERT_NE(figure, nullptr) << i->str();
    EXPECT_EQ(std::to_string(*figure), (*i)[2]) << i->str();
  }
  EXPECT_GT(count, 0);
}

TEST(SiteManual, TradeRecord) {
  const Section section = read_section("d/t/index");
  std::string bytes(sizeof(TradeRecord), '\0');
  std::istringstream lines(section.examples[0]);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream numbers(line);
    std::size_t offset = 0;
    numbers >> offset >> std::hex;
    for (unsigned byte = 0; numbers >> byte;) bytes.at(offset++) = static_cast<char>(byte);
  }
  const test::TempDir dir;
  std::vector<TradeRecord> trades;
  ASSERT_TRUE(load_trades(dir.write("index", bytes), trades));
  const TradeRecord& trade = trades.at(0);
  std::ostringstream read;
  read << "number " << trade.trade_id << ", domain \"" << domain_of(trade) << "\", address \""
       << url_of(trade) << "\", status " << trade.status << ".";
  EXPECT_NE(section.prose.find(read.str()), std::string::npos) << read.str();
}

TEST(SiteManual, Figures) {
  std::vector<TradeRow> rows = {make_row("42")};
  const Section sum = read_section("d/t/sum");
  read_recent_periods(sum.examples[0], rows);
  expect_figures_as_said(sum.prose, rows[0]);
  EXPECT_EQ(rows[0].periods[kPeriod07].further[2], 79);  // the last field of the record
  const Section history = read_section("d/h/DOMAIN.his");
  add_history(history.examples[0], rows[0].periods[kPeriod99]);
  expect_figures_as_said(history.prose, rows[0]);
}

/// Two rows in which the first has the greater figure of this name in this period, and only that.
bool ranks_first(std::string_view name, Period period, const std::string& value) {
  const std::string_view suffix = std::array{"60", "24", "07", "99"}.at(period);
  TradeRow greater = make_row("1");
  TradeRow smaller = make_row("2");
  const auto set = [&](std::string_view counter, std::int32_t more, std::int32_t less) {
    *test::find_counter(greater, std::string(counter).append(suffix)) = more;
    *test::find_counter(smaller, std::string(counter).append(suffix)) = less;
  };
  if (name.starts_with("further")) {
    greater.periods.at(period).further.at(static_cast<std::size_t>(name.back() - '1')) = 1;
  } else if (name.size() == 3) {
    set(name, 1, 0);
  } else {
    set(name.substr(0, 3), 2, 1);
    set(name.substr(4), 1, 1);
  }
  greater.order_key = smaller.order_key = value;
  return value == "57" ? rowBefore(smaller, greater) : rowBefore(greater, smaller);
}

TEST(SiteManual, OrderByValues) {
  std::istringstream lines(example("Order-by values"));
  std::string line;
  std::getline(lines, line);  // the periods
  int count = 0;
  while (std::getline(lines, line)) {
    const std::string name = line.substr(0, line.find("  "));
    std::istringstream values(line.substr(name.size()));
    for (std::size_t period = 0; period < kPeriodCount; ++period, ++count) {
      std::string value;
      values >> value;
      EXPECT_TRUE(is_order_value(value)) << line;
      EXPECT_TRUE(ranks_first(name, static_cast<Period>(period), value)) << name << ' ' << value;
    }
  }
  EXPECT_EQ(count, 60);
}

TEST(SiteManual, TemplateAndColumns) {
  std::vector<TradeRow> rows = {make_row("42", "tea.example"), make_row("57", "oak.example")};
  rows[0].url = "http://tea.example/";
  read_recent_periods(example("d/t/sum"), rows);
  const std::string columns = example("d/tl/tl.a1");
  attach_extra_columns(columns, rows);
  pick_alternatives(rows);
  const Section section = read_section("d/tl/TEMPLATE");
  const auto ranked = test::pointers_to<const TradeRow>(rows);
  EXPECT_EQ(render_template("", section.examples[0], ranked), section.examples[1]);
}

TEST(SiteManual, Toplists) {
  const auto definitions = parse_definitions(example("d/tl/tl"));
  ASSERT_EQ(definitions.size(), 2U);
  const test::TempDir dir;
  EXPECT_EQ(definitions[0].check_value,
            sha1_file_hex(dir.write("template", example("d/tl/TEMPLATE"))));
  EXPECT_EQ(definitions[0].build_mode + definitions[1].build_mode, "12");
  EXPECT_EQ(definitions[1].output_path, "archive/week.html");

  const std::string text = example("d/tl/tl.ext");
  const std::vector<ToplistSetting> settings = parse_settings(text);
  for (const ToplistSetting& setting : settings) EXPECT_TRUE(is_setting_key(setting.key));
  TradeRow row = make_row("42", "tea.example");
  const ToplistFilters filters = filters_of(definitions[0].template_path, settings);
  EXPECT_EQ(filters.dropped_by(row), "rin24");
  row.periods[kPeriod24].rin = 100;
  EXPECT_TRUE(filters.admit(row));
  row.domain = "elm.example";
  EXPECT_EQ(filters.dropped_by(row), "skipdomains");
  EXPECT_EQ(group_path(settings.at(2).value), "d/gr/drinks");

  TextColumn members;
  parse_group(example("d/gr/GROUP"), members);
  EXPECT_TRUE(members.contains("42") && members.contains("57") && !members.contains("drinks"));
}

TEST(SiteManual, ConfigurationAndLog) {
  const HarvestConfig config = parse_harvest_config(example("d/tl/vantaig"), "");
  EXPECT_EQ(config.lines.size(), HarvestConfig::kLineCount);
  EXPECT_EQ(image_tool_command(config, "a", "b"),
            "toplist-thumbnail l/thumbs/a.jpg 240x180 l/thumbs/b.jpg");
  EXPECT_TRUE(is_fetch_method(config.fetch_method()));
  EXPECT_TRUE(config.thumbnails_required() && config.harvest_enabled());

  EXPECT_EQ(example("l/sys/sys.log"),
            "|202611222359|toplist|1|" + sanitize_log_field(kSumPath) + "|1||||\n");
}

}  // namespace
}  // namespace toplist
