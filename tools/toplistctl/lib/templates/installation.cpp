#include "toplistctl/lib/templates/installation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>

#include "harvest/harvest_config.h"
#include "run/statistics.h"
#include "toplist/definitions.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/site_change.h"
#include "toplistctl/lib/templates/digest.h"
#include "util/file.h"

namespace toplist::ctl {
namespace {

constexpr std::array kOtherFiles{kDefinitionsPath, kSettingsPath, kExtraColumnsPath,
                                 kHarvestConfigPath};

}  // namespace

std::optional<std::string> template_name_of(const std::string& source) {
  const std::filesystem::path path(source);
  const std::string name = path.stem().string();
  if (name.empty() || !path.has_extension()) return std::nullopt;
  const std::string installed = std::string(kTemplateFolder) + name;
  const bool taken =
      std::find(kOtherFiles.begin(), kOtherFiles.end(), installed) != kOtherFiles.end();
  return taken ? std::nullopt : std::optional(name);
}

int install_template(const std::string& name, const std::string& text) {
  const std::string path = std::string(kTemplateFolder) + name;
  FileBuffer definitions;
  if (!definitions.read(kDefinitionsPath)) {
    return fail(std::string("cannot open ") + kDefinitionsPath, errno);
  }
  const std::string value = check_value_of(text);
  const auto updated = with_check_value(definitions.text(), name, value);

  auto change = SiteChange::begin("expand --install");
  if (!change) return fail(change.error().text());
  change->write(path, text);
  if (updated) change->write(kDefinitionsPath, *updated);
  if (const auto done = change->commit(); !done) return fail(done.error().text());
  if (!updated) warn(std::string(kDefinitionsPath) + " has no toplist with " + name + " yet");
  return print(value + "  " + name + "\n");
}

}  // namespace toplist::ctl
