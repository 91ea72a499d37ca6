#include "toplistctl/commands/init/init_harvest.h"

#include <CLI/CLI.hpp>
#include <filesystem>

#include "harvest/harvest_config.h"
#include "toplistctl/lib/new_site/harvest_root.h"
#include "toplistctl/lib/output/console.h"
#include "util/file.h"
#include "util/shell.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

/// What the service lets a harvest write, in the site and in the new root.
constexpr const char* kWritableFolder = "l/";

/// What stands between the new root and its first harvest.
std::string next_steps(const fs::path& site, const fs::path& root) {
  FileBuffer file;
  file.read((site / kHarvestConfigPath).string());
  const HarvestConfig config = parse_harvest_config(file.text(), "0");
  const std::string unit =
      "toplist-harvest@$(systemd-escape --path " + shell_word(root.string()) + ")";
  std::string text = root.string() + ": a root that harvests for " + site.string() + "\n\nNext:\n";
  if (config.harvest_enabled()) {
    text += "  write 0 on line 7 of " + (site / kHarvestConfigPath).string() +
            ": the site's own runs harvest as well\n";
  }
  if (!config.thumb_dir().starts_with(kWritableFolder)) {
    text += "  systemctl edit \"" + unit +
            ".service\", and there, below [Service]: ReadWritePaths=" +
            (site / config.thumb_dir()).parent_path().lexically_normal().string() + "\n";
  }
  return text + "  toplistctl check --site " + shell_word(root.string()) +
         "\n  systemctl enable --now \"" + unit + ".timer\"\n";
}

}  // namespace

CLI::Option* add_harvest_of_option(CLI::App& command, std::string& site) {
  return command
      .add_option("--harvest-of", site,
                  "Instead of a site, a second root that harvests for this one, so that no "
                  "partner's server delays its pages")
      ->type_name("SITE");
}

int init_harvest(const std::string& site, const std::string& root) {
  const std::string error = lay_out_harvest_root(site, root);
  if (!error.empty()) return fail(error);
  return print(next_steps(fs::canonical(site), fs::canonical(root)));
}

}  // namespace toplist::ctl
