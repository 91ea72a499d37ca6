#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <string>

#include "toplist/definitions.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/new_file.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "toplistctl/lib/templates/check_values.h"
#include "toplistctl/lib/templates/source.h"
#include "toplistctl/lib/templates/template_check.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

struct Arguments {
  std::string source;
  std::string output;
  std::string site = ".";
  bool install = false;
  bool force = false;
};

/// Expands one source, and writes or installs the template.
class ExpandCommand {
 public:
  explicit ExpandCommand(const Arguments& arguments)
      : arguments_(arguments), start_(fs::current_path()) {}

  Expected<int> run() {
    const auto name = template_name_of(arguments_.source);
    if (arguments_.install && !name) {
      return failure(fmt::format(
          "cannot install {}: a source needs a suffix, as in top50.tpl.src for d/tl/top50.tpl",
          arguments_.source));
    }
    // Before anything is read: by a link or an include the site's user could have root copy a file.
    const auto entered =
        arguments_.install ? enter_site(arguments_.site) : give_up_root(arguments_.source);
    if (!entered) return tl::unexpected(entered.error());
    expansion_ = expand_source(arguments_.source, [this](const std::string& path) {
      return read_file(from_start(path)).map_error([&path](Error error) {
        error.path = path;
        return error;
      });
    });
    if (expansion_.files.empty()) return failure(expansion_.errors.front().message);
    report(expansion_.errors);
    if (!expansion_.errors.empty()) return kExitFindings;
    return arguments_.install ? install(*name) : write_output();
  }

 private:
  /// A path of the command line, or one that a source names.
  [[nodiscard]] std::string from_start(const std::string& path) const { return start_ / path; }

  Expected<int> write_output() {
    if (!is_fit(use_without_site())) return kExitFindings;
    if (arguments_.output.empty()) return print(expansion_.text);
    if (is_source(arguments_.output)) return refuse_to_overwrite(arguments_.output);
    return replace_file(arguments_.output, expansion_.text).map([] { return 0; });
  }

  Expected<int> install(const std::string& name) {
    const std::string path = std::string(kTemplateFolder) + name;
    if (is_source(path)) return refuse_to_overwrite(path);
    const SiteView site;
    if (!is_fit(use_of(path, site))) return kExitFindings;
    const auto installed = install_template(name, expansion_.text);
    if (!installed) return tl::unexpected(installed.error());
    if (!installed->is_defined) {
      warn(fmt::format("{} has no toplist with {} yet", kDefinitionsPath, name));
    }
    return print(fmt::format("{}  {}\n", installed->check_value, name));
  }

  /// The use that the site makes of the template.
  static TemplateUse use_of(const std::string& path, const SiteView& site) {
    for (const ToplistView& toplist : site.toplists) {
      if (toplist.definition->template_path == path) return use_in(site, toplist);
    }
    return use_without_site();
  }

  /// Reports what is wrong with the template, where it is in the sources. False when it must not be
  /// written.
  [[nodiscard]] bool is_fit(const TemplateUse& use) const {
    Diagnostics findings;
    check_template(
        expansion_.text, use,
        [this](std::size_t line, std::size_t column) { return expansion_.place_of(line, column); },
        findings);
    report(findings);
    std::set<const Kind*> advised;
    for (const Diagnostic& finding : findings) {
      if (!advised.insert(finding.kind).second) continue;
      warn(fmt::format("{}: {}", finding.kind->name, finding.kind->advice));
    }
    if (arguments_.force || std::ranges::none_of(findings, blocks_lines)) return true;
    warn("nothing was written. Fix the source, or use --force to write the template anyway");
    return false;
  }

  static void report(const Diagnostics& findings) {
    for (const auto& [kind, place, message, _] : findings) {
      warn(fmt::format("{}{}: {}", place.prefix(), kind->name, message));
    }
  }

  /// Whether the path is one of the files that the expansion was made of.
  [[nodiscard]] bool is_source(const std::string& path) const {
    return std::ranges::any_of(expansion_.files, [&](const SourceFile& file) {
      std::error_code ignored;  // of what is not there yet
      return fs::equivalent(from_start(file.name), path, ignored);
    });
  }

  static tl::unexpected<Error> refuse_to_overwrite(const std::string& path) {
    return failure(fmt::format("{} is one of the sources. Nothing was changed.", path));
  }

  const Arguments& arguments_;
  fs::path start_;  ///< paths of the command line are relative to it
  Expansion expansion_;
};

}  // namespace

void add_expand_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command = program.add_command("expand", "Make a template from its source");
  command.footer(
      "Examples:\n"
      "  toplistctl expand d/tl/top50.tpl.src | less\n"
      "  toplistctl expand --install d/tl/top50.tpl.src\n"
      "Exit status: 0 written, 1 faults found and nothing written, 2 not done.");
  command.text("source", "FILE", arguments->source, "A template with directives").required();
  const Option output =
      command.text("--output", "FILE", arguments->output, "Write the template into this file");
  const Option install = command.flag(
      "--install", arguments->install,
      "Write it to d/tl/, under the source's name without its last suffix, and its check value "
      "to d/tl/tl");
  install.excludes(output);
  add_site_option(command, arguments->site).needs(install);
  command.flag("--force", arguments->force, "Write the template in spite of faults");
  command.run([arguments] { return ExpandCommand(*arguments).run(); });
}

}  // namespace toplist::ctl
