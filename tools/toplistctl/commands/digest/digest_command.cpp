#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "toplist/definitions.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/command_line/site_option.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/site_change.h"
#include "toplistctl/lib/templates/digest.h"
#include "util/file.h"
#include "util/sha1.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = kCurrentDirectory;
  std::vector<std::string> templates;
  bool update = false;
};

struct CheckValue {
  std::string template_name;
  std::string value;
};

/// The name as the definitions have it, for one that may be given with its folder.
std::string name_in_definitions(const std::string& name) {
  return name.starts_with(kTemplateFolder) ? name.substr(kTemplateFolder.size()) : name;
}

/// Puts the values into the definitions, all or none.
int update_definitions(const std::vector<CheckValue>& values) {
  FileBuffer file;
  if (!file.read(kDefinitionsPath)) return fail(std::string("cannot open ") + kDefinitionsPath);
  std::string text(file.text());
  for (const CheckValue& check : values) {
    auto updated = with_check_value(text, check.template_name, check.value);
    if (!updated) {
      return fail(std::string(kDefinitionsPath) + " has no complete record of " +
                  check.template_name + "; nothing was written");
    }
    text = std::move(*updated);
  }
  if (text == file.text()) return 0;
  auto change = SiteChange::begin("digest --update");
  if (!change) return fail(change.error().text());
  change->write(kDefinitionsPath, text);
  const auto done = change->commit();
  return done ? 0 : fail(done.error().text());
}

int digest(const Arguments& arguments) {
  if (!enter_or_fail(arguments.site)) return kExitTrouble;
  std::vector<CheckValue> values;
  for (const std::string& argument : arguments.templates) {
    const std::string name = name_in_definitions(argument);
    const std::string path = std::string(kTemplateFolder) + name;
    // Told here: to a run a template that it cannot open is like an empty one.
    if (!open_for_reading(path)) return fail("cannot open " + path);
    values.push_back({name, sha1_file_hex(path)});
  }
  if (arguments.update && update_definitions(values) != 0) return kExitTrouble;
  std::string text;
  for (const CheckValue& check : values) text += check.value + "  " + check.template_name + "\n";
  return print(text);
}

}  // namespace

void add_digest_command(CLI::App& app, int& exit_status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("digest", "Print the check values of templates");
  add_site_option(*command, arguments->site);
  command
      ->add_option("template", arguments->templates,
                   "Names as in the definitions, or with \"d/tl/\" in front")
      ->type_name("TEMPLATE")
      ->required();
  command->add_flag("--update", arguments->update,
                    "Also write the values into the definitions, d/tl/tl");
  command->callback([arguments, &exit_status] { exit_status = digest(*arguments); });
}

}  // namespace toplist::ctl
