#include "toplistctl/commands/sample/sample_pages.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "toplist/definitions.h"
#include "toplistctl/lib/formats/site_writer.h"
#include "toplistctl/lib/templates/check_values.h"
#include "util/fields.h"
#include "util/text.h"

namespace toplist::site {
namespace {

constexpr const char* kMenuPath = "d/tl/parts/menu.html";
constexpr const char* kFurtherPath = "d/tl/parts/further.html";
constexpr std::string_view kFurtherInclude = "<!-- include parts/further.html -->\n";
constexpr const char* kIndexPath = "d/tl/index.tpl.src";
constexpr std::size_t kOrderByValues = 60;

std::string first_lines(std::string_view text, std::size_t count) {
  std::size_t end = 0;
  while (count-- > 0 && end < text.size()) end = text.find(kLineSeparator, end) + 1;
  return std::string(text.substr(0, end));
}

std::string source_path(std::string_view template_path) {
  return std::string(template_path) + ctl::kSourceSuffix;
}

/// The settings of the toplists whose sources are there.
std::string settings_in_use(const SiteTexts& texts) {
  std::string in_use;
  FieldReader fields(texts.at(kSettingsPath));
  for (SettingRecord record; next_record(fields, record) == kSettingFields;) {
    const auto& [_, name, setting] = record;
    if (!texts.contains(source_path(std::string(kTemplateFolder).append(name)))) continue;
    append_setting(in_use, name, setting);
  }
  return in_use;
}

/// Leaves out all designed pages behind the first `count`: what is said of a page stands in a line
/// of its own, in the same order everywhere.
void keep_first_pages(SiteTexts& texts, std::size_t count) {
  std::vector<ToplistDefinition> left_out = parse_definitions(texts.at(kDefinitionsPath));
  left_out.erase(left_out.begin(), left_out.begin() + static_cast<std::ptrdiff_t>(count));
  for (const auto& definition : left_out) texts.erase(source_path(definition.template_path));
  for (const char* path : {kDefinitionsPath, kMenuPath}) {
    texts[path] = first_lines(texts.at(path), count);
  }
  texts[kSettingsPath] = settings_in_use(texts);
}

/// A plain table of 100 ranks with 10 tags each; every third has a minimum.
void add_list(SiteTexts& texts, std::size_t number) {
  const std::string name = "list-" + std::to_string(number);
  const std::string template_name = name + ".tpl";
  // A step that has no divisor in common with 60 passes through all values before one comes again.
  const std::string order_by = std::to_string(number * 7 % kOrderByValues + 1);
  std::string source(embedded_text("list.tpl.src"));
  replace_all(source, "{number}", std::to_string(number));
  replace_all(source, "{order}", order_by);
  texts[source_path(std::string(kTemplateFolder) + template_name)] = source;
  append_definition(
      texts[kDefinitionsPath],
      {.template_name = template_name, .output_path = name + ".html", .order_by = order_by});
  if (number % 3 == 0) append_setting(texts[kSettingsPath], template_name, "rin24=10");
}

/// Adds links to the lists, which the menu does not name; the ranks are theirs among all pages.
void add_links(SiteTexts& texts, std::size_t first, std::size_t last) {
  std::string links(embedded_text("further.html"));
  replace_all(links, "{first}", std::to_string(first));
  replace_all(links, "{last}", std::to_string(last));
  texts[kFurtherPath] = links;
}

std::size_t designed_pages(const SiteTexts& texts, const SampleOptions& options) {
  const std::size_t there = parse_definitions(texts.at(kDefinitionsPath)).size();
  return options.plain ? 0 : std::min(there, options.toplists);
}

}  // namespace

SiteTexts make_pages(const SampleOptions& options) {
  SiteTexts texts;
  add_folder(texts, "sample");
  if (options.thumbnails == Thumbnails::none) add_folder(texts, "no-pictures");
  if (options.thumbnails == Thumbnails::harvested) add_folder(texts, "harvest");

  const std::size_t designed = designed_pages(texts, options);
  keep_first_pages(texts, designed);
  for (std::size_t number = designed + 1; number <= options.toplists; ++number) {
    add_list(texts, number);
  }
  if (designed == options.toplists) {
    replace_all(texts[kIndexPath], kFurtherInclude, "");
  } else if (designed > 0) {
    add_links(texts, designed, options.toplists - 1);
  }
  install_templates(texts);
  return texts;
}

}  // namespace toplist::site
