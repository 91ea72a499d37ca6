#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "toplist/definitions.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/command_line/completion.h"
#include "toplistctl/lib/diagnostics/diagnostic.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/formats/order_names.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_data.h"
#include "toplistctl/lib/site_files/site_root.h"

namespace toplist::ctl {
namespace {

using Words = std::vector<std::string>;

template <typename Range, typename Name>
Words names_of(const Range& range, const Name& name) {
  Words names(std::size(range));
  std::transform(std::begin(range), std::end(range), names.begin(), name);
  return names;
}

Words templates() {
  const std::string definitions = read_file(kDefinitionsPath).value_or("");
  return names_of(parse_definitions(definitions), [](const ToplistDefinition& toplist) {
    return toplist.template_path.substr(kTemplateFolder.size());
  });
}

Words domains() { return names_of(read_trades().value_or(std::vector<TradeRecord>()), domain_of); }

Words effects() {
  return names_of(kEffects, [](const EffectName& effect) { return effect.word; });
}

Words finding_kinds() {
  return names_of(kinds::all(), [](const Kind* kind) { return kind->name; });
}

/// The possible values of a type that the help names.
struct ValueType {
  std::string_view name;
  const char* action;  ///< what bash completes itself: "directory", "file" or "user"
  Words (*words)();    ///< nullptr for values that bash completes
  bool from_site = false;
};
constexpr ValueType kValueTypes[] = {
    {"DIR", "directory", nullptr},     {"FILE", "file", nullptr},
    {"FOLDER", "directory", nullptr},  {"EFFECT", "", effects},
    {"KIND", "", finding_kinds},       {"KEY", "", order_value_names},
    {"NAME", "user", nullptr},         {"SITE", "directory", nullptr},
    {"TEMPLATE", "", templates, true}, {"TRADE", "", domains, true},
};

/// nullptr for values without a list of words, such as "N".
const ValueType* value_type_named(std::string_view name) {
  const auto* const type = std::find_if(std::begin(kValueTypes), std::end(kValueTypes),
                                        [name](const ValueType& t) { return t.name == name; });
  return type == std::end(kValueTypes) ? nullptr : type;
}

/// The possible words for `awaited`. Reports no errors, because the line is not finished.
Words choices(const AwaitedWord& awaited, const ValueType* type) {
  if (type == nullptr) return awaited.words;
  if (type->words == nullptr) return {};
  if (type->from_site && !enter_site(awaited.site)) return {};
  return type->words();
}

std::string completion_text(const AwaitedWord& awaited) {
  const ValueType* const type = value_type_named(awaited.type);
  std::string text = type == nullptr ? "\n" : std::string(type->action) + '\n';
  for (const std::string& word : choices(awaited, type)) {
    if (!word.empty() && word.starts_with(awaited.typed)) text += word + '\n';
  }
  return text;
}

}  // namespace

void add_complete_command(const Command& program) {
  const auto line = std::make_shared<Words>();
  const Command command =
      program.add_command("complete", "List what may come next on a command line, for the shell");
  command.hide();
  command.texts("words", "TEXT", *line,
                "What follows the program's name, including the word to complete");
  command.run([line, program] { return print(completion_text(awaited_word(program, *line))); });
}

}  // namespace toplist::ctl
