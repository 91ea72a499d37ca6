#pragma once

#include <span>
#include <string>
#include <string_view>

#include "run/sys_log.h"
#include "run/trade_record.h"

namespace toplist {

/// What a run does besides reading files. A run does these things at once. The companion, which
/// only reads a site, collects, compares or drops them.
class Outcomes {
 public:
  virtual ~Outcomes() = default;

  /// Something went wrong; `failure` says whether the run ends.
  virtual void log(const Failure& failure) = 0;

  /// The folder of the required thumbnails cannot be opened; the run ends.
  virtual void unopened_folder(const std::string& folder) = 0;

  /// The configuration asks for a harvest of these trades.
  virtual void harvest(std::span<const TradeRecord> trades) = 0;

  /// A page is complete. False when the file at `path` cannot be opened for writing.
  virtual bool write_page(const std::string& path, std::string_view page) = 0;
};

}  // namespace toplist
