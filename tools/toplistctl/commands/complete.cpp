#include <memory>

#include "toplistctl/commands.h"
#include "toplistctl/lib/command_line/completion.h"
#include "toplistctl/lib/output/console.h"

namespace toplist::ctl {

void add_complete_command(const Command& program) {
  const auto line = std::make_shared<std::vector<std::string>>();
  const Command command =
      program.add_command("complete", "What a shell may offer: asked by its script");
  command.hide();
  command.texts("words", "TEXT", *line, "The line after the program's name, up to the word to end");
  command.run([line, program] {
    const Completion completion = complete(*program.app(), *line);
    std::string text = completion.action + "\n";
    for (const std::string& word : completion.words) text += word + "\n";
    return print(text);
  });
}

}  // namespace toplist::ctl
