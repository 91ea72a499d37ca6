#pragma once

#include "harvest/trade_harvest.h"
#include "net/raw_http.h"
#include "run/trade_record.h"

namespace toplist {

/// A harvester thread's input, and the connections that it leaves open.
struct HarvestVisit {
  const TradeRecord* trade;  ///< only read
  /// Connections that the built-in client does not close. Their owner does, when the whole harvest
  /// has ended.
  Connections held_open = {};
};

/// Thread entry: harvests the thumbnail of one trade, that of a `HarvestVisit*`, and ends the
/// thread. Without enough memory there is no thumbnail.
void* harvest_worker(void* visit);

/// Visits the trade's page and stores the first acceptable picture that one of its own links wraps
/// as "<thumb_dir><domain>.jpg", then runs the image tool. Reads the configuration "d/tl/vantaig"
/// again. Its only results are files and log lines. Finding no picture is not a failure.
void harvest_trade(const TradeRecord& trade, const RawFetch& raw_fetch);

}  // namespace toplist
