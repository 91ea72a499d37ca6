#include <charconv>
#include <string>

#include "toplist/filters.h"
#include "toplist/ranking.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/commands/check/records.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/new_site/harvest_root.h"
#include "toplistctl/lib/site_files/writable.h"
#include "util/fields.h"
#include "util/number.h"
#include "util/sha1.h"
#include "util/text_column.h"

namespace toplist::ctl {
namespace {

// --- definitions ---

/// Finds faults of one toplist after the other.
class DefinitionCheck {
 public:
  DefinitionCheck(const SiteView& site, Diagnostics& findings) : site_(site), findings_(findings) {}

  void check(const ToplistView& toplist) {
    toplist_ = &toplist;
    check_template();
    if (!is_order_value(definition().order_by)) {
      add(kinds::kOrderBy, "order-by value " + in_quotes(definition().order_by));
    }
    check_output();
    if (toplist.passing.empty() && !site_.run.rows.empty()) {
      add(kinds::kEmptyToplist, "no trade passes its filters: " + drops());
    }
  }

 private:
  [[nodiscard]] const ToplistDefinition& definition() const { return *toplist_->definition; }

  void add(const Kind& kind, const std::string& fault) {
    findings_.push_back({&kind,
                         {.file = kDefinitionsPath, .record = toplist_->record},
                         definition().template_path + ": " + fault});
  }

  void check_template() {
    const SiteFile file(definition().template_path);
    const std::string fault = file.is_open() ? "" : "the template " + cannot_open(file.error());
    if (toplist_->allowed) {
      if (!file.is_open()) add(kinds::kMissingTemplate, fault);
    } else if (definition().build_mode != "1") {
      add(kinds::kBuildMode, "mode " + in_quotes(definition().build_mode));
    } else {
      add(kinds::kCheckValue, file.is_open() ? differing_values() : fault);
    }
  }

  [[nodiscard]] std::string differing_values() const {
    return "check value " + in_quotes(definition().check_value) + ", but the template's is " +
           in_quotes(sha1_file_hex(definition().template_path));
  }

  [[nodiscard]] std::string drops() const {
    std::string text;
    for (const auto& [filter, count] : toplist_->dropped) {
      text += (text.empty() ? "" : ", ") + std::string(filter) + " drops " + std::to_string(count);
    }
    return text;
  }

  void check_output() {
    const std::string& path = definition().output_path;
    if (!can_be_written(path)) {
      add(kinds::kOutput, "the page " + in_quotes(path) + " cannot be written");
    }
  }

  const SiteView& site_;
  Diagnostics& findings_;
  const ToplistView* toplist_ = nullptr;
};

// --- settings ---

bool is_number(std::string_view value) {
  while (!value.empty() && is_blank(value.front())) value.remove_prefix(1);
  value = without_end_blanks(value);
  if (value.starts_with('+')) value.remove_prefix(1);
  std::int32_t number = 0;
  const char* end = value.data() + value.size();
  const auto parsed = std::from_chars(value.data(), end, number);
  return parsed.ec == std::errc() && parsed.ptr == end;
}

bool is_empty_list(std::string_view value) {
  TextColumn domains;
  parse_domains(std::string(value), domains);
  return domains.empty();
}

void check_group(const std::string& path, Diagnostics& findings) {
  const SiteFile file(path);
  if (!file.is_open()) {
    findings.push_back({&kinds::kMissingGroup, {.file = path}, cannot_open(file.error())});
    return;
  }
  if (const auto misfit = find_misfit(file.text(), kGroupFields)) {
    findings.push_back({&kinds::kGroupFields,
                        {.file = path, .line = misfit->line},
                        "the line has " + std::to_string(misfit->fields) + " of " +
                            std::to_string(kGroupFields) + " fields"});
  }
  TextColumn members;
  parse_group(file.text(), members);
  if (members.empty())
    findings.push_back({&kinds::kEmptyGroup, {.file = path}, "the group has no member"});
}

/// What is wrong with the value of a setting; nullptr when nothing is.
const Kind* value_fault(const ToplistSetting& setting) {
  if (!is_setting_key(setting.key)) return &kinds::kUnknownKey;
  if (is_minimum_key(setting.key)) return is_number(setting.value) ? nullptr : &kinds::kBadNumber;
  if (setting.key == kGroupKey) return nullptr;
  return is_empty_list(setting.value) ? &kinds::kEmptyList : nullptr;
}

bool is_used(std::string_view template_name, const std::vector<ToplistDefinition>& definitions) {
  const std::string path = std::string(kTemplateFolder).append(template_name);
  for (const ToplistDefinition& definition : definitions) {
    if (definition.template_path == path) return true;
  }
  return false;
}

void check_record(const SiteView& site, const SettingRecord& record, std::size_t number,
                  Diagnostics& findings) {
  const auto add = [&](const Kind& kind) {
    findings.push_back({&kind,
                        {.file = kSettingsPath, .record = number},
                        in_quotes(record[2]) + " for " + in_quotes(record[1])});
  };
  if (!is_used(record[1], site.run.definitions)) add(kinds::kUnknownTemplate);
  const auto setting = read_setting(record);
  if (!setting) return add(kinds::kNoEquals);
  if (const Kind* fault = value_fault(*setting)) add(*fault);
  if (setting->key != kGroupKey) return;
  if (const auto path = group_path(setting->value)) check_group(*path, findings);
}

}  // namespace

void check_definitions(const SiteView& site, Diagnostics& findings) {
  const SiteFile file(kDefinitionsPath);
  if (!check_open(file, findings)) return;
  if (const auto misfit = find_misfit(file.text(), kDefinitionFields)) {
    findings.push_back({&kinds::kDefinitionFields,
                        {.file = kDefinitionsPath, .line = misfit->line},
                        "the line has " + std::to_string(misfit->fields) + " of " +
                            std::to_string(kDefinitionFields) + " fields"});
  }
  if (site.run.definitions.empty() && !is_harvest_root()) {  // where none are wanted
    findings.push_back({&kinds::kNoToplists,
                        {.file = kDefinitionsPath},
                        without_end_blanks(file.text()).empty()
                            ? "the file is empty"
                            : "the last record has a template and no page"});
  }
  DefinitionCheck check(site, findings);
  for (const ToplistView& toplist : site.toplists) check.check(toplist);
}

void check_settings(const SiteView& site, Diagnostics& findings) {
  const SiteFile file(kSettingsPath);
  if (!check_open(file, findings)) return;
  const std::string_view text = without_end_blanks(file.text());
  if (const auto misfit = find_misfit(text, kSettingFields, LineBreaks::anywhere)) {
    findings.push_back({&kinds::kSettingFields,
                        {.file = kSettingsPath, .line = misfit->line},
                        "the last record is incomplete"});
  }
  FieldReader fields(text);
  SettingRecord record;
  for (std::size_t number = 1; next_record(fields, record) == record.size(); ++number) {
    check_record(site, record, number, findings);
  }
}

}  // namespace toplist::ctl
