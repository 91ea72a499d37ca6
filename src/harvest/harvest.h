#pragma once

#include <cstddef>
#include <span>

#include "run/trade_record.h"

namespace toplist {

/// The first eleven trades of the database are never visited (contract: first-eleven).
inline constexpr std::size_t kFirstHarvestedTrade = 11;
inline constexpr std::size_t kHarvestThreads = 8;

/// What a harvester thread runs; its argument is a `HarvestVisit*`.
using HarvestThread = void* (*)(void* visit);

/// Visits every trade from kFirstHarvestedTrade on, active or not, with a thread for each. The
/// threads run in groups of kHarvestThreads. The next group starts when all of a group have ended.
/// A thread that cannot be started is ignored.
///
/// Connections that the threads leave open stay open until the harvest ends. Each takes a
/// descriptor, so the harvest has a RaisedDescriptorLimit.
void harvest_thumbnails(std::span<const TradeRecord> trades, HarvestThread thread);

/// The same with harvest_worker().
void harvest_thumbnails(std::span<const TradeRecord> trades);

}  // namespace toplist
