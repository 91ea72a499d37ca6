#include "toplist/definitions.h"

#include "util/fields.h"
#include "util/sha1.h"

namespace toplist {
namespace {

constexpr std::size_t kOutputField = 3;
constexpr std::size_t kOrderByField = 4;
constexpr std::size_t kBuildModeField = 5;

}  // namespace

std::vector<ToplistDefinition> parse_definitions(std::string_view text) {
  std::vector<ToplistDefinition> definitions;
  FieldReader fields(text);
  DefinitionRecord record;
  while (const std::size_t count = next_record(fields, record)) {
    if (count <= kTemplateField) break;
    if (count <= kOutputField) return {};
    ToplistDefinition& definition = definitions.emplace_back();
    definition.template_path = std::string(kTemplateFolder).append(record[kTemplateField]);
    definition.output_path = record[kOutputField];
    definition.order_by = record[kOrderByField];
    definition.build_mode = record[kBuildModeField];
    definition.check_value = record[kCheckValueField];
  }
  return definitions;
}

std::optional<ToplistSetting> read_setting(const SettingRecord& record) {
  const auto [unused, template_name, setting] = record;
  const std::size_t equals = setting.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  return ToplistSetting{template_name, setting.substr(0, equals), setting.substr(equals + 1)};
}

std::vector<ToplistSetting> parse_settings(std::string_view text) {
  std::vector<ToplistSetting> settings;
  FieldReader fields(text);
  SettingRecord record;
  while (next_record(fields, record) == record.size()) {
    if (const auto setting = read_setting(record)) settings.push_back(*setting);
  }
  return settings;
}

bool may_be_built(const ToplistDefinition& definition) {
  if (definition.build_mode == "2") return true;
  return definition.build_mode == "1" &&
         definition.check_value == sha1_file_hex(definition.template_path);
}

}  // namespace toplist
