#include <memory>

#include "toplistctl/commands.h"
#include "toplistctl/completion/completion.h"
#include "toplistctl/output/console.h"

namespace toplist::ctl {
namespace {

int complete_line(const CLI::App& app, const std::vector<std::string>& line) {
  const Completion completion = complete(app, line);
  std::string text = completion.action + "\n";
  for (const std::string& word : completion.words) text += word + "\n";
  return print(text);
}

}  // namespace

void add_complete_command(CLI::App& app, int& exit_status) {
  const auto line = std::make_shared<std::vector<std::string>>();
  CLI::App* command = app.add_subcommand("complete", "What a shell may offer: asked by its script");
  command->group("");  // not for people
  command->add_option("words", *line, "The line behind the program's name, up to the word to end");
  command->callback([line, &app, &exit_status] { exit_status = complete_line(app, *line); });
}

}  // namespace toplist::ctl
