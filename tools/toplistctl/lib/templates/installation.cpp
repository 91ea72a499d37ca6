#include "toplistctl/lib/templates/installation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>

#include "harvest/harvest_config.h"
#include "run/statistics.h"
#include "toplist/definitions.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/whole_file.h"
#include "toplistctl/lib/templates/digest.h"
#include "util/file.h"

namespace toplist::ctl {
namespace {

constexpr std::array kOtherFiles{kDefinitionsPath, kSettingsPath, kExtraColumnsPath,
                                 kHarvestConfigPath};

int cannot_write(const std::string& path, int error) { return fail("cannot write " + path, error); }

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

  PreparedFiles files;
  int error = files.prepare(path, text);
  if (error == 0 && updated) error = files.prepare(kDefinitionsPath, *updated);
  // A run that comes in between, or after a power cut there, finds the new template under the old
  // value: it leaves the page as it is, and whatever is done next, this command again or a
  // "digest --update", leads to the new page. The other way round it could lead back to the old
  // one.
  if (error == 0) error = files.replace();
  if (error != 0) return cannot_write(files.failed(), error);
  if (!updated) warn(std::string(kDefinitionsPath) + " has no toplist with " + name + " yet");
  return print(value + "  " + name + "\n");
}

}  // namespace toplist::ctl
