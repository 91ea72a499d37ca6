#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace toplist {

inline constexpr const char* kDefinitionsPath = "d/tl/tl";
inline constexpr const char* kSettingsPath = "d/tl/tl.ext";

/// The fields of one toplist in "d/tl/tl", and of one setting in "d/tl/tl.ext".
inline constexpr std::size_t kDefinitionFields = 9;
inline constexpr std::size_t kSettingFields = 3;
using DefinitionRecord = std::array<std::string_view, kDefinitionFields>;
using SettingRecord = std::array<std::string_view, kSettingFields>;

/// Fields of a DefinitionRecord that more than its reader look at.
inline constexpr std::size_t kTemplateField = 1;
inline constexpr std::size_t kCheckValueField = 6;

/// One toplist as "d/tl/tl" defines it.
struct ToplistDefinition {
  std::string template_path;  ///< "d/tl/" and the template's file name.
  std::string output_path;    ///< As it stands: relative to the site's root unless absolute.
  std::string
      order_by;  ///< "1" to "60"; never checked (contract: unchecked-order), see rowBefore().
  std::string build_mode;   ///< "1": built while the check value holds; "2": always built.
  std::string check_value;  ///< The template's digest as of sha1_file_hex().
};

/// One setting as "d/tl/tl.ext" holds it: views into that file's text.
struct ToplistSetting {
  std::string_view template_name;  ///< The template's file name, without "d/tl/".
  std::string_view key;            ///< What stands before the first "=",
  std::string_view value;          ///< and all that stands behind it.
};

/// Where the templates are: what every template path begins with.
inline constexpr std::string_view kTemplateFolder = "d/tl/";

/// Reads the text of "d/tl/tl": fields separated by "|", nine to a toplist, counted across line
/// breaks. Field 1 is the template, 3 the output path, 4 the order-by value, 5 the build mode, 6
/// the check value; the others are not used here.
///
/// Fields missing from a cut last record are empty. But when that record has a template and no
/// output path, the result is empty: no toplist is built at all (contract: cut-definition).
std::vector<ToplistDefinition> parse_definitions(std::string_view text);

/// The setting in a complete record; nothing when it has no "=".
std::optional<ToplistSetting> read_setting(const SettingRecord& record);

/// Reads the text of "d/tl/tl.ext": fields separated by "|", three to a setting, counted across
/// line breaks: one unused, the template's name, "key=value". Settings without "=" or cut short by
/// the end of the text are left out.
std::vector<ToplistSetting> parse_settings(std::string_view text);

/// Whether the definition's build mode, and under "1" its check value, lets it be built.
bool may_be_built(const ToplistDefinition& definition);

}  // namespace toplist
