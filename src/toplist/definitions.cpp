#include "toplist/definitions.h"

#include <array>
#include <cstddef>

#include "util/fields.h"
#include "util/sha1.h"

namespace toplist {
namespace {

constexpr std::size_t kDefinitionFields = 9;
constexpr std::size_t kTemplateField = 1;
constexpr std::size_t kOutputField = 3;
constexpr std::size_t kOrderByField = 4;
constexpr std::size_t kBuildModeField = 5;
constexpr std::size_t kCheckValueField = 6;

/// Takes up to N fields; returns how many there were. The rest of `record` is left empty.
template <std::size_t N>
std::size_t next_record(FieldReader& fields, std::array<std::string_view, N>& record) {
  record = {};
  std::size_t count = 0;
  while (count < N && fields.next(record[count])) ++count;
  return count;
}

}  // namespace

std::string path_of_template(std::string_view template_name) {
  return "d/tl/" + std::string(template_name);
}

std::vector<ToplistDefinition> parse_definitions(std::string_view text) {
  std::vector<ToplistDefinition> definitions;
  FieldReader fields(text);
  std::array<std::string_view, kDefinitionFields> record;
  while (const std::size_t count = next_record(fields, record)) {
    if (count <= kTemplateField) break;
    if (count <= kOutputField) return {};
    ToplistDefinition& definition = definitions.emplace_back();
    definition.template_path = path_of_template(record[kTemplateField]);
    definition.output_path = record[kOutputField];
    definition.order_by = record[kOrderByField];
    definition.build_mode = record[kBuildModeField];
    definition.check_value = record[kCheckValueField];
  }
  return definitions;
}

std::vector<ToplistSetting> parse_settings(std::string_view text) {
  std::vector<ToplistSetting> settings;
  FieldReader fields(text);
  std::array<std::string_view, 3> record;
  while (next_record(fields, record) == record.size()) {
    const auto [unused, template_name, setting] = record;
    const std::size_t equals = setting.find('=');
    if (equals == std::string_view::npos) continue;
    settings.push_back({template_name, setting.substr(0, equals), setting.substr(equals + 1)});
  }
  return settings;
}

bool may_be_built(const ToplistDefinition& definition) {
  if (definition.build_mode == "2") return true;
  return definition.build_mode == "1" &&
         definition.check_value == sha1_file_hex(definition.template_path);
}

}  // namespace toplist
