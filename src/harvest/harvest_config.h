#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace toplist {

inline constexpr const char* kHarvestConfigPath = "d/tl/vantaig";

/// The harvest configuration, "d/tl/vantaig": one value per line. Lines end at a line feed only, so
/// a carriage return belongs to the value before it.
///
/// Line 1 is the directory of the thumbnails, with its own trailing "/"; 2 the image tool; 3 text
/// between the tool's input and output path; 5 the fetch method ("0" the built-in client, "1" wget,
/// "2" fetch, "3" curl; with any other text nothing is fetched); 6 "0" to show only trades that
/// have a thumbnail; 7 a number from 1 to 24 to harvest thumbnails in the run. Line 4 is not used.
struct HarvestConfig {
  enum Line : std::size_t {
    kThumbDir = 1,
    kImageTool = 2,
    kImageToolArgs = 3,
    kFetchMethod = 5,
    kThumbnailsOptional = 6,
    kHarvest = 7,
    kLineCount = 7,
  };

  std::vector<std::string> lines;  ///< At least kLineCount, more when the file has more.

  [[nodiscard]] const std::string& thumb_dir() const { return line(kThumbDir); }
  [[nodiscard]] const std::string& image_tool() const { return line(kImageTool); }
  [[nodiscard]] const std::string& image_tool_args() const { return line(kImageToolArgs); }
  [[nodiscard]] const std::string& fetch_method() const { return line(kFetchMethod); }
  [[nodiscard]] bool thumbnails_required() const { return line(kThumbnailsOptional) == "0"; }
  [[nodiscard]] bool harvest_enabled() const;

  /// `number` counts from 1.
  [[nodiscard]] const std::string& line(Line number) const { return lines[number - 1]; }
};

/// Splits the file's text into lines and appends `padding` until there are kLineCount.
HarvestConfig parse_harvest_config(std::string_view text, std::string_view padding);

}  // namespace toplist
