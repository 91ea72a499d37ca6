#include "toplistctl/lib/command_line/completion.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>
#include <utility>

#include "toplistctl/lib/command_line/values.h"

namespace toplist::ctl {
namespace {

/// What the words before the last one have led to.
struct Place {
  const CLI::App* command;
  const CLI::Option* awaiting = nullptr;  ///< whose value comes next
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

void pass(const std::string& word, Place& place) {
  if (place.awaiting != nullptr) {
    if (place.awaiting->check_lname("site")) place.site = word;
    place.awaiting = nullptr;
  } else if (word.starts_with('-')) {
    const CLI::Option* option = place.command->get_option_no_throw(word);
    const bool takes_value = option != nullptr && option->get_items_expected_max() > 0;
    if (takes_value) place.awaiting = option;
  } else if (const CLI::App* command = command_named(*place.command, word)) {
    place.command = command;
  } else {
    ++place.arguments;
  }
}

/// The argument whose turn it is; nullptr when the command takes no more.
const CLI::Option* argument_at(const Place& place) {
  const auto arguments = place.command->get_options(
      [](const CLI::Option* option) { return option->get_positional(); });
  if (arguments.empty()) return nullptr;
  if (place.arguments < arguments.size()) return arguments[place.arguments];
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

/// Behind the type's name the help may list the choices: "TEXT:{first,second}".
std::vector<std::string> listed_choices(std::string_view type) {
  const std::size_t open = type.find(":{");
  if (open == std::string_view::npos || !type.ends_with('}')) return {};
  return CLI::detail::split(std::string(type.substr(open + 2, type.size() - open - 3)), ',');
}

Completion values_of(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const ValueType* known = value_type_named(type.substr(0, type.find(':')));
  if (known == nullptr) return {"", listed_choices(type)};
  return {std::string(known->action),
          known->words == nullptr ? std::vector<std::string>() : known->words()};
}

Completion choices_at(const Place& place, bool is_option) {
  if (place.awaiting != nullptr) return values_of(*place.awaiting);
  if (is_option) return {"", option_names(*place.command)};
  if (auto commands = command_names(*place.command); !commands.empty()) {
    if (place.arguments > 0) commands.clear();  // behind a word that is none of them
    return {"", std::move(commands)};
  }
  const CLI::Option* argument = argument_at(place);
  return argument != nullptr ? values_of(*argument) : Completion{"", option_names(*place.command)};
}

}  // namespace

Completion complete(const CLI::App& app, std::vector<std::string> line) {
  if (line.empty() || line.back() == "=") line.emplace_back();
  std::erase(line, "=");
  const std::string word = line.back();
  line.pop_back();

  Place place{.command = &app};
  for (const std::string& before : line) pass(before, place);
  if (::chdir(place.site.c_str()) != 0) return {};

  Completion completion = choices_at(place, word.starts_with('-'));
  std::erase_if(completion.words, [&word](const std::string& choice) {
    return choice.empty() || !choice.starts_with(word);
  });
  return completion;
}

}  // namespace toplist::ctl
