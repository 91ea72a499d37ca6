#include "toplistctl/lib/command_line/command_line.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <map>
#include <utility>

#include "toplistctl/lib/output/console.h"

namespace toplist::ctl {
namespace {

/// Adds --version to the command and to all below it.
void add_version_flag(CLI::App& app, const std::string& version) {
  app.set_version_flag("--version", version);
  for (CLI::App* command : app.get_subcommands({})) add_version_flag(*command, version);
}

int parse(CLI::App& app, int argc, char** argv) {
  try {
    app.parse(argc, argv);
    return 0;
  } catch (const CLI::Success& help_or_version) {
    return app.exit(help_or_version);
  } catch (const CLI::ParseError& error) {
    // If the library reports something as missing, the cause is often a mistyped word.
    const std::vector<std::string> unknown = app.remaining(true);
    if (unknown.empty()) return fail(fmt::format("{}; see --help", error.what()));
    return fail(fmt::format("there is no command or option \"{}\"; see --help", unknown.front()));
  }
}

}  // namespace

const Option& Option::required() const {
  option_->required();
  return *this;
}

const Option& Option::excludes(const Option& other) const {
  option_->excludes(other.option_);
  return *this;
}

const Option& Option::needs(const Option& other) const {
  option_->needs(other.option_);
  return *this;
}

Command Command::add_command(const std::string& name, const std::string& about) const {
  return Command(app_->add_subcommand(name, about), exit_status_);
}

void Command::footer(const std::string& text) const { app_->footer(text); }
void Command::require_command() const { app_->require_subcommand(1); }
void Command::hide() const { app_->group(""); }

void Command::run(Action action) const {
  app_->callback([exit_status = exit_status_, act = std::move(action)] {
    const Expected<int> result = act();
    *exit_status = result ? *result : fail(result.error().text());
  });
}

Option Command::flag(const std::string& name, bool& value, const std::string& about) const {
  return Option(app_->add_flag(name, value, about));
}

Option Command::text(const std::string& name, const std::string& type, std::string& value,
                     const std::string& about) const {
  return Option(app_->add_option(name, value, about)->type_name(type));
}

Option Command::texts(const std::string& name, const std::string& type,
                      std::vector<std::string>& values, const std::string& about) const {
  return Option(app_->add_option(name, values, about)
                    ->type_name(type)
                    ->allow_extra_args(!name.starts_with('-')));
}

Option Command::checked(const std::string& name, const std::string& type, std::string& value,
                        const std::function<std::string(const std::string&)>& check,
                        const std::string& about) const {
  return Option(app_->add_option(name, value, about)->type_name(type)->check(check));
}

Option Command::choice(const std::string& name, const std::string& type, std::string& value,
                       const std::vector<std::string>& words, const std::string& about) const {
  return Option(app_->add_option(name, value, about)->check(CLI::IsMember(words))->type_name(type));
}

Option Command::number(const std::string& name, const std::string& type, std::size_t& value,
                       std::size_t least, const std::string& about) const {
  return Option(app_->add_option(name, value, about)
                    ->type_name(type)
                    ->check(CLI::Range(least, std::size_t{INT32_MAX})));
}

Option Command::duration(const std::string& name, std::optional<std::int64_t>& seconds,
                         const std::string& about) const {
  const std::map<std::string, std::int64_t> units{{"s", 1}, {"m", 60}, {"h", 3600}, {"d", 86400}};
  const auto options = CLI::AsNumberWithUnit::Options(CLI::AsNumberWithUnit::CASE_SENSITIVE |
                                                      CLI::AsNumberWithUnit::UNIT_REQUIRED);
  return Option(app_->add_option(name, seconds, about)
                    ->transform(CLI::AsNumberWithUnit(units, options).description(""))
                    ->check(CLI::NonNegativeNumber.description(""))
                    ->type_name("DURATION"));
}

Option add_site_option(const Command& command, std::string& directory) {
  return command.text("--site", "DIR", directory,
                      "The site's root, instead of the current directory");
}

Option add_user_option(const Command& command, std::string& user) {
  return command.text("--user", "NAME", user,
                      "As root: act as this user, the one who runs toplist");
}

int run_command_line(int argc, char** argv, const std::string& about, const std::string& version,
                     std::span<void (*const)(const Command&)> commands) {
  CLI::App app(about);
  app.require_subcommand(1);
  int exit_status = 0;
  for (const auto add : commands) add(Command(&app, &exit_status));
  add_version_flag(app, version);
  const int status = parse(app, argc, argv);
  return status != 0 ? status : exit_status;
}

}  // namespace toplist::ctl
