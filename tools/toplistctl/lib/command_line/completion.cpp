#include "toplistctl/lib/command_line/completion.h"

#include <CLI/CLI.hpp>
#include <string_view>
#include <utility>

namespace toplist::ctl {
namespace {

/// The result of the words before the last one.
struct Position {
  const CLI::App* command;
  const CLI::Option* awaiting = nullptr;  ///< the option whose value comes next
  std::size_t arguments = 0;              ///< of the command, without options and their values
  std::string site = ".";
};

std::vector<const CLI::App*> shown_commands(const CLI::App& parent) {
  return parent.get_subcommands([](const CLI::App* app) { return !app->get_group().empty(); });
}

const CLI::App* command_named(const CLI::App& parent, const std::string& name) {
  for (const CLI::App* command : shown_commands(parent)) {
    if (command->get_name() == name) return command;
  }
  return nullptr;
}

void pass(const std::string& word, Position& position) {
  if (position.awaiting != nullptr) {
    if (position.awaiting->check_lname("site")) position.site = word;
    position.awaiting = nullptr;
  } else if (word.starts_with('-')) {
    const CLI::Option* option = position.command->get_option_no_throw(word);
    const bool takes_value = option != nullptr && option->get_items_expected_max() > 0;
    if (takes_value) position.awaiting = option;
  } else if (const CLI::App* command = command_named(*position.command, word)) {
    position.command = command;
  } else {
    ++position.arguments;
  }
}

/// The next argument; nullptr if the command takes no more.
const CLI::Option* argument_at(const Position& position) {
  const auto arguments = position.command->get_options(
      [](const CLI::Option* option) { return option->get_positional(); });
  if (arguments.empty()) return nullptr;
  if (position.arguments < arguments.size()) return arguments[position.arguments];
  const bool repeats = arguments.back()->get_items_expected_max() > 1;
  return repeats ? arguments.back() : nullptr;
}

std::vector<std::string> command_names(const CLI::App& parent) {
  std::vector<std::string> names;
  for (const CLI::App* command : shown_commands(parent)) names.push_back(command->get_name());
  return names;
}

std::vector<std::string> option_names(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

/// After the type's name the help may list the choices: "PERIOD:{60,24,07,99}".
void add_value(const CLI::Option& option, AwaitedWord& awaited) {
  const std::string type = option.get_type_name();
  const std::size_t open = type.find(":{");
  awaited.type = type.substr(0, type.find(':'));
  if (open == std::string::npos || !type.ends_with('}')) return;
  awaited.words = CLI::detail::split(type.substr(open + 2, type.size() - open - 3), ',');
}

}  // namespace

AwaitedWord awaited_word(const Command& program, std::vector<std::string> line) {
  if (line.empty() || line.back() == "=") line.emplace_back();
  std::erase(line, "=");
  AwaitedWord awaited{.typed = std::move(line.back()), .words = {}};
  line.pop_back();

  Position position{.command = program.app()};
  for (const std::string& word : line) pass(word, position);
  awaited.site = position.site;
  const std::vector<std::string> commands = command_names(*position.command);
  if (position.awaiting != nullptr) {
    add_value(*position.awaiting, awaited);
  } else if (awaited.typed.starts_with('-')) {
    awaited.words = option_names(*position.command);
  } else if (!commands.empty()) {
    if (position.arguments == 0) awaited.words = commands;  // else after an unknown word
  } else if (const CLI::Option* argument = argument_at(position)) {
    add_value(*argument, awaited);
  } else {
    awaited.words = option_names(*position.command);
  }
  return awaited;
}

}  // namespace toplist::ctl
