#include <fmt/core.h>

#include <memory>
#include <string>
#include <vector>

#include "toplist/definitions.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "toplistctl/lib/templates/check_values.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = ".";
  std::vector<std::string> templates;
  bool update = false;
};

/// The name as the definitions have it, for one that may be given with its folder.
std::string name_in_definitions(const std::string& name) {
  return name.starts_with(kTemplateFolder) ? name.substr(kTemplateFolder.size()) : name;
}

Expected<int> digest(const Arguments& arguments) {
  if (auto entered = enter_site(arguments.site); !entered) return tl::unexpected(entered.error());
  std::vector<NamedValue> values;
  std::string text;
  for (const std::string& argument : arguments.templates) {
    const std::string name = name_in_definitions(argument);
    const auto bytes = read_file(std::string(kTemplateFolder) + name);
    if (!bytes) return tl::unexpected(bytes.error());
    values.push_back({name, check_value_of(*bytes)});
    text += fmt::format("{}  {}\n", values.back().check_value, name);
  }
  if (!arguments.update) return print(text);
  return update_check_values(values).map([&text] { return print(text); });
}

}  // namespace

void add_digest_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command =
      program.add_command("digest", "Print or store the check values of templates");
  add_site_option(command, arguments->site);
  command
      .texts("template", "TEMPLATE", arguments->templates,
             "Names as in d/tl/tl; \"d/tl/\" may precede them")
      .required();
  command.flag("--update", arguments->update, "Also store the values in d/tl/tl");
  command.run([arguments] { return digest(*arguments); });
}

}  // namespace toplist::ctl
