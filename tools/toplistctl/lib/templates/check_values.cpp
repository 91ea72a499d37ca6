#include "toplistctl/lib/templates/check_values.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

#include "harvest/harvest_config.h"
#include "run/statistics.h"
#include "toplist/definitions.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_change.h"
#include "util/fields.h"
#include "util/sha1.h"

namespace toplist::ctl {
namespace {

constexpr std::array kOtherFiles{kDefinitionsPath, kSettingsPath, kExtraColumnsPath,
                                 kHarvestConfigPath};

}  // namespace

std::string check_value_of(std::string_view text) {
  Sha1Context context{};
  sha1_init(context);
  sha1_update(context, reinterpret_cast<const unsigned char*>(text.data()), text.size());
  sha1_final(context);
  return sha1_digest_text(context.digest, DigestText::hexadecimal);
}

std::optional<std::string> with_check_value(std::string_view text, std::string_view template_name,
                                            std::string_view check_value) {
  std::string result;
  std::size_t copied = 0;
  bool found = false;
  FieldReader fields(text);
  DefinitionRecord record;
  while (next_record(fields, record) > kCheckValueField) {
    const std::string_view old_value = record[kCheckValueField];
    if (record[kTemplateField] != template_name) continue;
    const auto at = static_cast<std::size_t>(old_value.data() - text.data());
    result.append(text.substr(copied, at - copied)).append(check_value);
    copied = at + old_value.size();
    found = true;
  }
  if (!found) return std::nullopt;
  return result.append(text.substr(copied));
}

std::optional<std::string> template_name_of(const std::string& source) {
  const std::filesystem::path path(source);
  const std::string name = path.stem().string();
  if (name.empty() || !path.has_extension()) return std::nullopt;
  const bool taken = std::ranges::any_of(kOtherFiles, [&name](std::string_view other) {
    return other.substr(kTemplateFolder.size()) == name;
  });
  return taken ? std::nullopt : std::optional(name);
}

Expected<void> update_check_values(const std::vector<NamedValue>& values) {
  auto change = SiteChange::begin("digest --update");
  if (!change) return tl::unexpected(change.error());
  const Expected<std::string> definitions = read_file(kDefinitionsPath);
  if (!definitions) return tl::unexpected(nothing_changed(definitions.error()));
  std::string text = *definitions;
  for (const auto& [name, value] : values) {
    auto updated = with_check_value(text, name, value);
    if (!updated) {
      return failure(fmt::format("{} has no complete record of {}. {}", kDefinitionsPath, name,
                                 kNothingChanged));
    }
    text = std::move(*updated);
  }
  if (text != *definitions) change->write(kDefinitionsPath, std::move(text));
  return change->commit();
}

Expected<Installed> install_template(const std::string& name, const std::string& text) {
  auto change = SiteChange::begin("expand --install");
  if (!change) return tl::unexpected(change.error());
  const Expected<std::string> definitions = read_file(kDefinitionsPath);
  if (!definitions) return tl::unexpected(nothing_changed(definitions.error()));
  const std::string value = check_value_of(text);
  auto updated = with_check_value(*definitions, name, value);
  const bool is_defined = updated.has_value();
  // A run without the lock may come in between. It then finds the new template under the old value
  // and leaves the page as it is.
  change->write(std::string(kTemplateFolder) + name, text);
  if (updated) change->write(kDefinitionsPath, std::move(*updated));
  return change->commit().map([&] { return Installed{value, is_defined}; });
}

}  // namespace toplist::ctl
