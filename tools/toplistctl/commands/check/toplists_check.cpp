#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>

#include "toplist/filters.h"
#include "toplist/ranking.h"
#include "toplistctl/commands/check/check.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/new_site/harvest_root.h"
#include "toplistctl/lib/site_files/paths.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "toplistctl/lib/templates/check_values.h"
#include "util/fields.h"
#include "util/text_column.h"

namespace toplist::ctl {
namespace {

// --- definitions ---

/// Why a run cannot write a page.
struct OutputFault {
  const Kind* kind;
  std::string text;
};

std::optional<OutputFault> output_fault(const std::string& path) {
  namespace fs = std::filesystem;
  if (!why_not_writable(path)) return std::nullopt;
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) return OutputFault{&kinds::kOutput, "it is a folder"};
  const fs::path page = real_path(path);
  const std::string folder = page.parent_path().string();
  if (!fs::is_directory(folder, ignored)) {
    return OutputFault{&kinds::kOutput, fmt::format("there is no folder {}", folder)};
  }
  const std::string& owned = fs::exists(page, ignored) ? path : folder;
  return OutputFault{&kinds::kOutputOwner,
                     fmt::format("{} belongs to {}, and {} may not write to it", owned,
                                 owner_name(owned), user_name(::geteuid()))};
}

/// Checks one toplist.
class DefinitionCheck {
 public:
  DefinitionCheck(const SiteView& site, const ToplistView& toplist, Diagnostics& findings)
      : site_(site), toplist_(toplist), definition_(*toplist.definition), findings_(findings) {}

  void check() {
    check_template();
    check_output();
    if (!is_order_value(definition_.order_by)) {
      report(kinds::kOrderBy, fmt::format("the order-by value is \"{}\"", definition_.order_by));
    }
    if (toplist_.passing.empty() && !toplist_.ranking.empty()) {
      report(kinds::kEmptyToplist, "no trade passes its settings: " + drops());
    }
  }

 private:
  void report(const Kind& kind, std::string_view fault) {
    add(findings_, kind, {.file = kDefinitionsPath, .record = toplist_.record}, "{}: {}",
        definition_.template_path, fault);
  }

  void check_template() {
    const bool needs_value = definition_.build_mode == "1";
    Diagnostics faults;
    const auto text =
        read_input(definition_.template_path,
                   needs_value ? kinds::kSkippedTemplate : kinds::kMissingTemplate, faults);
    if (!needs_value && definition_.build_mode != "2") {
      report(kinds::kBuildMode, fmt::format("the build mode is \"{}\"", definition_.build_mode));
    } else if (!text) {
      report(*faults.front().kind, "the template: " + faults.front().message);
    } else if (!toplist_.allowed && is_ranked()) {
      report(kinds::kCheckValue,
             fmt::format("the check value is \"{}\", but the template's is \"{}\"",
                         definition_.check_value, check_value_of(*text)));
    }
  }

  /// Not if a run would read one of its groups without end.
  [[nodiscard]] bool is_ranked() const {
    return !toplist_.ranking.empty() || site_.run.rows.empty();
  }

  [[nodiscard]] std::string drops() const {
    std::string text;
    for (const auto& [filter, count] : toplist_.dropped) {
      text += fmt::format("{}{} drops {}", text.empty() ? "" : ", ", filter, count);
    }
    return text;
  }

  void check_output() {
    const std::string& path = definition_.output_path;
    if (const auto fault = output_fault(path)) {
      report(*fault->kind, fmt::format("the page \"{}\" cannot be written: {}", path, fault->text));
    }
  }

  const SiteView& site_;
  const ToplistView& toplist_;
  const ToplistDefinition& definition_;
  Diagnostics& findings_;
};

// --- settings ---

bool is_number(std::string_view value) {
  const auto number = whole_number(value);
  return number && *number >= INT32_MIN && *number <= INT32_MAX;
}

bool is_empty_list(std::string_view value) {
  TextColumn domains;
  parse_domains(std::string(value), domains);
  return domains.empty();
}

void check_group(const std::string& path, Diagnostics& findings) {
  const auto text = read_input(path, kinds::kMissingGroup, findings);
  if (!text) return;
  check_fields(kinds::kGroupFields, path, *text, kGroupFields, findings);
  TextColumn members;
  parse_group(*text, members);
  if (members.empty()) add(findings, kinds::kEmptyGroup, {.file = path}, "the group has no member");
}

/// What is wrong with the value of a setting; nullptr when nothing is.
const Kind* value_fault(const ToplistSetting& setting) {
  if (!is_setting_key(setting.key)) return &kinds::kUnknownKey;
  if (is_minimum_key(setting.key)) return is_number(setting.value) ? nullptr : &kinds::kBadNumber;
  if (setting.key == kGroupKey) return nullptr;
  return is_empty_list(setting.value) ? &kinds::kEmptyList : nullptr;
}

bool is_used(std::string_view template_name, const std::vector<ToplistDefinition>& definitions) {
  return std::any_of(definitions.begin(), definitions.end(), [&](const ToplistDefinition& toplist) {
    return std::string_view(toplist.template_path).substr(kTemplateFolder.size()) == template_name;
  });
}

void check_record(const SiteView& site, const SettingRecord& record, std::size_t number,
                  Diagnostics& findings) {
  const auto report = [&](const Kind& kind) {
    add(findings, kind, {.file = kSettingsPath, .record = number}, "\"{}\" for \"{}\"", record[2],
        record[1]);
  };
  if (!is_used(record[1], site.run.definitions)) report(kinds::kUnknownTemplate);
  const auto setting = read_setting(record);
  if (!setting) return report(kinds::kNoEquals);
  if (const Kind* fault = value_fault(*setting)) report(*fault);
  if (setting->key != kGroupKey) return;
  if (const auto path = group_path(setting->value)) check_group(*path, findings);
}

}  // namespace

void check_definitions(const SiteView& site, Diagnostics& findings) {
  const auto text = read_input(kDefinitionsPath, kinds::kMissingFile, findings);
  if (!text) return;
  check_fields(kinds::kDefinitionFields, kDefinitionsPath, *text, kDefinitionFields, findings);
  if (site.run.definitions.empty() && !is_harvest_root()) {  // a harvest root has none on purpose
    add(findings, kinds::kNoToplists, {.file = kDefinitionsPath}, "{}",
        without_end_blanks(*text).empty() ? "the file is empty"
                                          : "the last record has a template and no page");
  }
  for (const ToplistView& toplist : site.toplists) {
    DefinitionCheck(site, toplist, findings).check();
  }
}

void check_settings(const SiteView& site, Diagnostics& findings) {
  const auto text = read_input(kSettingsPath, kinds::kMissingFile, findings);
  if (!text) return;
  const std::string_view records = without_end_blanks(*text);
  check_fields(kinds::kSettingFields, kSettingsPath, records, kSettingFields, findings,
               LineBreaks::anywhere);
  FieldReader fields(records);
  SettingRecord record;
  for (std::size_t number = 1; next_record(fields, record) == record.size(); ++number) {
    check_record(site, record, number, findings);
  }
}

}  // namespace toplist::ctl
