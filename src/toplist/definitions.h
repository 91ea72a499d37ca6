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

/// Fields of a DefinitionRecord that other code needs as well.
inline constexpr std::size_t kTemplateField = 1;
inline constexpr std::size_t kCheckValueField = 6;

/// One toplist as "d/tl/tl" defines it.
struct ToplistDefinition {
  std::string template_path;  ///< "d/tl/" and the template's file name.
  std::string output_path;    ///< Relative to the site's root, or absolute.
  std::string
      order_by;  ///< "1" to "60"; never checked (contract: unchecked-order), see rowBefore().
  std::string build_mode;   ///< "1": built while the check value holds; "2": always built.
  std::string check_value;  ///< The template's digest, as from sha1_file_hex().
};

/// One setting of "d/tl/tl.ext", as views into that file's text.
struct ToplistSetting {
  std::string_view template_name;  ///< The template's file name, without "d/tl/".
  std::string_view key;            ///< The text before the first "=",
  std::string_view value;          ///< and all text after it.
};

/// The folder of the templates. Every template path begins with it.
inline constexpr std::string_view kTemplateFolder = "d/tl/";

/// Reads the text of "d/tl/tl": fields separated by "|", nine to a toplist, counted across line
/// breaks. Field 1 is the template, 3 the output path, 4 the order-by value, 5 the build mode, 6
/// the check value; the others are not used here.
///
/// Fields missing from a cut last record are empty. But if that record has a template and no
/// output path, the result is empty, and no toplist is built (contract: cut-definition).
std::vector<ToplistDefinition> parse_definitions(std::string_view text);

/// The setting in a complete record; nothing when it has no "=".
std::optional<ToplistSetting> read_setting(const SettingRecord& record);

/// Reads the text of "d/tl/tl.ext": fields separated by "|", three to a setting, counted across
/// line breaks: one unused, the template's name, "key=value". Settings without "=" are left out,
/// and so is a last one that is cut.
std::vector<ToplistSetting> parse_settings(std::string_view text);

/// Whether the definition's build mode, and with "1" its check value, allows the build.
bool may_be_built(const ToplistDefinition& definition);

}  // namespace toplist
