#include <fmt/core.h>

#include <filesystem>
#include <memory>
#include <string>

#include "harvest/harvest_config.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/new_site/harvest_root.h"
#include "toplistctl/lib/new_site/new_site.h"
#include "toplistctl/lib/output/console.h"
#include "util/shell.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

/// What the service lets a harvest write, in the site and in the new root.
constexpr const char* kWritableFolder = "l/";

struct Arguments {
  std::string directory;
  std::string harvested_site;  ///< empty: a site of its own
};

Expected<int> init_site(const std::string& directory) {
  return empty_site()
      .and_then([&](const NewSite& site) { return create_site(directory, site); })
      .map([&] {
        return print(fmt::format("{}: created an empty site with one toplist, d/tl/index.tpl.src\n",
                                 directory));
      });
}

/// What the user must do before the root's first harvest.
std::string next_steps(const HarvestedSite& harvested, const fs::path& root) {
  const auto& [site, config] = harvested;
  const std::string name = shell_word(root.string());
  const std::string unit = fmt::format("toplist-harvest@$(systemd-escape --path {})", name);
  std::string text = fmt::format("{}: created a root that harvests for {}\n\nNext:\n",
                                 root.string(), site.string());
  if (config.harvest_enabled()) {
    text += fmt::format("  write 0 on line 7 of {}, or the site's own runs harvest as well\n",
                        (site / kHarvestConfigPath).string());
  }
  if (!config.thumb_dir().starts_with(kWritableFolder)) {
    text +=
        fmt::format("  systemctl edit \"{}.service\", and write [Service] and ReadWritePaths={}\n",
                    unit, (site / config.thumb_dir()).parent_path().lexically_normal().string());
  }
  return text + fmt::format("  toplistctl check --site {}\n  systemctl enable --now \"{}.timer\"\n",
                            name, unit);
}

Expected<int> init_harvest(const Arguments& arguments) {
  return create_harvest_root(arguments.harvested_site, arguments.directory)
      .map([&](const HarvestedSite& site) {
        return print(next_steps(site, fs::canonical(arguments.directory)));
      });
}

}  // namespace

void add_init_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command =
      program.add_command("init", "Create an empty site, or a root that harvests for another site");
  command.footer(
      "Create an empty site:\n"
      "  toplistctl init /srv/mysite\n"
      "Create a root that fetches a site's thumbnails, apart from the runs that build its pages:\n"
      "  toplistctl init --harvest-of /srv/mysite /srv/mysite-harvest");
  command.text("directory", "DIR", arguments->directory, "New or empty").required();
  command.text(
      "--harvest-of", "SITE", arguments->harvested_site,
      "Create a second root that harvests for this site, so that no partner's server delays "
      "its pages");
  command.run([arguments] {
    return arguments->harvested_site.empty() ? init_site(arguments->directory)
                                             : init_harvest(*arguments);
  });
}

}  // namespace toplist::ctl
