#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>

#include "harvest/harvest_config.h"
#include "net/raw_http.h"
#include "run/trade_record.h"

namespace toplist::ctl {

/// Takes text of whole lines as soon as it is known.
using Report = std::function<void(const std::string& lines)>;

/// Fetches as get_raw_http() does.
using RawGet = std::function<RawResponse(const std::string& host, const std::string& url)>;

/// Does what a harvester thread would do for the trade at `index`, with the harvest's own steps,
/// and reports each step. It stores nothing and does not run the image tool. The downloaders' files
/// are in the same folder as in a run, and are removed. True if a run would store a picture.
///
/// `config` is that of a harvester thread: short configurations are padded with empty lines.
bool try_harvest(std::span<const TradeRecord> trades, std::size_t index,
                 const HarvestConfig& config, const RawGet& get, const Report& report);

}  // namespace toplist::ctl
