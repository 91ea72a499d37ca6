#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>

#include "render/render.h"
#include "toplistctl/commands.h"
#include "toplistctl/commands/render/page_folder.h"
#include "toplistctl/commands/render/unified_diff.h"
#include "toplistctl/lib/command_line/site_option.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/site_file.h"
#include "toplistctl/lib/site_view/site_view.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = kCurrentDirectory;
  std::string name;        ///< of a template or page
  std::size_t record = 0;  ///< in the definitions, from 1; 0: the first one called so
  bool all = false;
  std::string folder;
  bool diff = false;
};

// --- one page ---

int fail_to_find(const Arguments& arguments) {
  const std::string as_record =
      arguments.record == 0 ? "" : " as record " + std::to_string(arguments.record);
  return fail(std::string(kDefinitionsPath) + " has no toplist with the template or page " +
              arguments.name + as_record);
}

int print_diff(const std::string& path, std::string_view page) {
  const PageDiff diff = compare_with_page(path, page);
  if (!diff.error.empty()) return fail(path + ": " + diff.error);
  return print(diff.text, diff.differs ? kExitFindings : 0);
}

/// Says why the next run leaves the page as it is.
void warn_of(const ToplistView& toplist) {
  if (toplist.next_run.is_built()) return;
  warn("record " + std::to_string(toplist.record) + ": the next run does not write " +
       toplist.definition->output_path + ": " + toplist.next_run.text());
}

/// Renders it whether the next run does or not: a preview is there to be looked at before.
int print_page(const ToplistView& toplist, bool as_diff) try {
  const SiteFile file(toplist.definition->template_path);
  if (!file.is_open()) return fail("cannot open " + file.path(), file.error());
  const std::string page = render_template(file.path(), file.text(), toplist.passing);
  warn_of(toplist);
  return as_diff ? print_diff(toplist.definition->output_path, page) : print(page);
} catch (const StrayMark& stray) {
  warn(stray.what());
  return kExitFindings;
}

int render_one(const Arguments& arguments) {
  const SiteView site;
  const SiteFile definitions(kDefinitionsPath);
  if (!definitions.is_open()) return fail("cannot open " + definitions.path(), definitions.error());
  const ToplistView* toplist = site.find(arguments.name, arguments.record);
  if (toplist == nullptr) return fail_to_find(arguments);
  if (site.run.rows.empty()) return fail("there is no trade to show: " + site.rehearsal.ending());
  return print_page(*toplist, arguments.diff);
}

// --- all pages ---

/// The statuses of commands grow with what went wrong.
void add_status(int& status, int of_a_part) { status = std::max(status, of_a_part); }

int put_into(const PageFolder& folder, const std::string& path, std::string_view page) {
  const std::string fault = folder.add(path, page);
  return fault.empty() ? 0 : fail(path + " is left out: " + fault);
}

int render_all(const Arguments& arguments, const PageFolder& folder) {
  int status = 0;
  const SiteView site(kSteps, [&](const std::string& path, std::string_view page) {
    add_status(status, arguments.diff ? print_diff(path, page) : put_into(folder, path, page));
  });
  for (const ToplistView& toplist : site.toplists) {
    if (toplist.next_run.kind == Prospect::Kind::skipped) warn_of(toplist);
  }
  if (!site.rehearsal.ending().empty()) {
    warn("the next run ends early: " + site.rehearsal.ending());
    add_status(status, kExitFindings);
  }
  return status;
}

// --- the command ---

int render(const Arguments& arguments) {
  const PageFolder folder(arguments.folder);  // before the site becomes the working directory
  if (!enter_or_fail(arguments.site)) return kExitTrouble;
  return arguments.all ? render_all(arguments, folder) : render_one(arguments);
}

/// What is missing in the arguments; empty when nothing is.
std::string missing_argument(const Arguments& arguments) {
  if (!arguments.all) return arguments.name.empty() ? "TEMPLATE or --all is required" : "";
  return arguments.diff || !arguments.folder.empty() ? "" : "--all requires --into or --diff";
}

}  // namespace

void add_render_command(CLI::App& app, int& exit_status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command =
      app.add_subcommand("render", "Write a page as a run would write it now, without the run");
  command->footer(
      "The site is only read. Exit status: 0 rendered, 1 a run would stop or, with --diff, pages "
      "differ, 2 not rendered.\n"
      "Examples:\n"
      "  toplistctl render --diff index.tpl\n"
      "  toplistctl render --all --into /tmp/preview");
  add_site_option(*command, arguments->site);
  CLI::Option* name = command
                          ->add_option("template", arguments->name,
                                       "A name as in the definitions, or a page's path")
                          ->type_name("TEMPLATE");
  CLI::Option* record = command
                            ->add_option("--record", arguments->record,
                                         "This record of the definitions, of several with TEMPLATE")
                            ->type_name("N")
                            ->check(CLI::PositiveNumber)
                            ->needs(name);
  CLI::Option* all = command->add_flag("--all", arguments->all, "All pages that a run would write")
                         ->excludes(name)
                         ->excludes(record);
  CLI::Option* into =
      command->add_option("--into", arguments->folder, "Write them below FOLDER, at their paths")
          ->type_name("FOLDER")
          ->needs(all);
  command->add_flag("--diff", arguments->diff, "What would change in the pages, as a unified diff")
      ->excludes(into);
  command->callback([arguments, &exit_status] {
    const std::string missing = missing_argument(*arguments);
    exit_status = missing.empty() ? render(*arguments) : fail(missing);
  });
}

}  // namespace toplist::ctl
