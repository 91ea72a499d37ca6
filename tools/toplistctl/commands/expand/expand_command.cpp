#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <set>
#include <string>

#include "toplist/definitions.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/command_line/site_option.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/new_file.h"
#include "toplistctl/lib/templates/expansion.h"
#include "toplistctl/lib/templates/installation.h"
#include "toplistctl/lib/templates/template_check.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string source;
  std::string output;
  std::string site = kCurrentDirectory;
  bool install = false;
  bool force = false;
};

int tell_errors(const std::vector<SourceError>& errors) {
  for (const auto& [place, message] : errors) {
    warn(Place{.file = place.file, .line = place.line, .column = place.column}.prefix() + message);
  }
  return kExitFindings;
}

/// The findings one by one, then what to do about each kind of them.
void tell_findings(const Diagnostics& findings) {
  for (const Diagnostic& finding : findings) {
    warn(finding.place.prefix() + std::string(finding.kind->name) + ": " + finding.message);
  }
  std::set<const Kind*> told;
  for (const Diagnostic& finding : findings) {
    if (!told.insert(finding.kind).second) continue;
    warn(std::string(finding.kind->name) + ": " + std::string(finding.kind->advice));
  }
}

/// Tells what is wrong with the template, where it stands in the sources. False when it is not to
/// be written.
bool is_fit(const Expansion& expansion, const TemplateUse& use, bool force) {
  Diagnostics findings;
  const PlaceOf place_of = [&expansion](std::size_t line, std::size_t column) {
    const SourcePlace place = expansion.place_of(line, column);
    return Place{.file = place.file, .line = place.line, .column = place.column};
  };
  check_template(expansion.text, use, place_of, findings);
  tell_findings(findings);
  if (force || std::none_of(findings.begin(), findings.end(), blocks_lines)) return true;
  warn("nothing was written; --force writes it all the same");
  return false;
}

/// Whether `path` is one of the files that the expansion was made of.
bool is_source(const Expansion& expansion, const std::filesystem::path& path) {
  return std::any_of(expansion.files.begin(), expansion.files.end(), [&path](const auto& file) {
    std::error_code ignored;  // of what is not there yet
    return std::filesystem::equivalent(file, path, ignored);
  });
}

int refuse_to_overwrite(const std::string& path) {
  return fail(path + " is one of the sources; nothing was written");
}

int write_output(const Expansion& expansion, const std::string& path) {
  if (path.empty()) return print(expansion.text);
  if (is_source(expansion, path)) return refuse_to_overwrite(path);
  const auto done = replace_file(path, expansion.text);
  return done ? 0 : fail(done.error().text());
}

/// The use that the site makes of the template; in the working directory.
TemplateUse use_of(const std::string& path, const SiteView& site) {
  for (const ToplistView& toplist : site.toplists) {
    if (toplist.definition->template_path == path) return use_in(site, toplist);
  }
  return use_without_site();
}

int install(const Expansion& expansion, const Arguments& arguments) {
  const auto name = template_name_of(arguments.source);
  if (!name) {
    return fail(arguments.source +
                " is no name of a source: d/tl/top50.tpl comes from top50.tpl.src");
  }
  const std::string path = std::string(kTemplateFolder) + *name;
  if (is_source(expansion, std::filesystem::path(arguments.site) / path)) {
    return refuse_to_overwrite(path);
  }
  if (!enter_or_fail(arguments.site)) return kExitTrouble;
  const SiteView site;
  if (!is_fit(expansion, use_of(path, site), arguments.force)) return kExitFindings;
  return install_template(*name, expansion.text);
}

int expand(const Arguments& arguments) {
  int error = 0;
  const Expansion expansion = expand_source(arguments.source, [&error](const std::string& path) {
    auto text = read_source_file(path);
    if (!text) error = errno;
    return text;
  });
  if (expansion.files.empty()) return fail("cannot open " + arguments.source, error);
  if (!expansion.errors.empty()) return tell_errors(expansion.errors);
  if (arguments.install) return install(expansion, arguments);
  if (!is_fit(expansion, use_without_site(), arguments.force)) return kExitFindings;
  return write_output(expansion, arguments.output);
}

}  // namespace

void add_expand_command(CLI::App& app, int& exit_status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command =
      app.add_subcommand("expand", "Write out a template's source: its includes and repeats");
  command->footer(
      "Examples:\n"
      "  toplistctl expand d/tl/top50.tpl.src | less\n"
      "  toplistctl expand --install d/tl/top50.tpl.src\n"
      "Exit status: 0 written, 1 faults found and nothing written, 2 not done.");
  command->add_option("source", arguments->source, "A template with directives")
      ->type_name("FILE")
      ->required();
  CLI::Option* output = command->add_option("--output", arguments->output,
                                            "Write the template into this file, in one step");
  output->type_name("FILE");
  CLI::Option* install = command->add_flag(
      "--install", arguments->install,
      "Write it to d/tl/, under the source's name without its last suffix, and its check value "
      "into the definitions");
  install->excludes(output);
  add_site_option(*command, arguments->site)->needs(install);
  command->add_flag("--force", arguments->force, "Write also what stops a run or blocks a line");
  command->callback([arguments, &exit_status] { exit_status = expand(*arguments); });
}

}  // namespace toplist::ctl
