#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "harvest/harvest_config.h"
#include "run/statistics.h"
#include "run/trade_record.h"
#include "run/trade_row.h"
#include "toplist/definitions.h"
#include "util/file.h"

namespace toplist::ctl {

/// A file of the site, read whole.
class SiteFile {
 public:
  explicit SiteFile(std::string path);

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] bool is_open() const { return error_ == 0; }
  /// Why it cannot be opened, as errno tells.
  [[nodiscard]] int error() const { return error_; }
  /// Empty when it cannot be opened.
  [[nodiscard]] std::string_view text() const { return bytes_.text(); }

 private:
  std::string path_;
  FileBuffer bytes_;
  int error_ = 0;
};

/// One toplist as a run would build it now.
struct ToplistView {
  const ToplistDefinition* definition;
  std::size_t record;                    ///< in "d/tl/tl", from 1
  bool built;                            ///< its mode and check value let it be built
  std::vector<const TradeRow*> passing;  ///< no filter drops them; in rank order
  /// How many trades each filter drops, by setting key or kThumbnailFilter. A trade counts for the
  /// first filter that drops it.
  std::map<std::string_view, std::size_t> dropped;
};

/// What a run knows of the site in the working directory before it writes a page, read by the run's
/// own readers. Where a run would end, this goes on with what there is; nothing is logged.
struct SiteData {
  SiteData();
  SiteData(const SiteData&) = delete;  // rows and settings are views into the files
  SiteData& operator=(const SiteData&) = delete;

  SiteFile trades_file{kTradesPath};  ///< also parsed into `trades`
  SiteFile config_file{kHarvestConfigPath};
  SiteFile columns_file{kExtraColumnsPath};
  SiteFile sum_file{kSumPath};
  SiteFile definitions_file{kDefinitionsPath};
  SiteFile settings_file{kSettingsPath};

  std::vector<TradeRecord> trades;
  HarvestConfig config;
  std::vector<TradeRow> rows;  ///< of the active trades, in database order
  std::vector<ToplistDefinition> definitions;
  std::vector<ToplistSetting> settings;
  int thumbnails_error = 0;  ///< why the folder of required thumbnails cannot be listed
  std::vector<ToplistView> toplists;

 private:
  void build_rows_from_files();
  void rank_toplists();
};

}  // namespace toplist::ctl
