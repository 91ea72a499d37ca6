#pragma once

#include "harvest/trade_harvest.h"
#include "net/raw_http.h"
#include "run/trade_record.h"

namespace toplist {

/// What a harvester thread is given, and what it leaves behind.
struct HarvestVisit {
  const TradeRecord* trade;  ///< only read
  /// Connections that the built-in client does not close. Their owner does, when the whole harvest
  /// has ended.
  Connections held_open = {};
};

/// Thread entry: harvests the thumbnail of one trade, that of a `HarvestVisit*`, and ends the
/// thread. A trade for which memory does not suffice gets none.
void* harvest_worker(void* visit);

/// Visits the trade's page and stores the first acceptable picture that one of its own links wraps
/// as "<thumb_dir><domain>.jpg", then runs the image tool. Reads the configuration "d/tl/vantaig"
/// afresh. Leaves nothing behind but files and log lines; finding nothing is no failure.
void harvest_trade(const TradeRecord& trade, const RawFetch& raw_fetch);

}  // namespace toplist
