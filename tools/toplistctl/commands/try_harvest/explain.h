#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>

#include "harvest/harvest_config.h"
#include "net/raw_http.h"
#include "run/trade_record.h"

namespace toplist::ctl {

/// Takes a line of an account as soon as it is known; it has no line feed at its end.
using Tell = std::function<void(const std::string& line)>;

/// Fetches as get_raw_http() does.
using RawGet = std::function<RawResponse(const std::string& host, const std::string& url)>;

/// Does what a harvester thread would do for the trade at `index`, by the harvest's own steps, and
/// tells it step by step. Nothing is stored and the image tool is not run; the downloaders put
/// their files where a run's do, and remove them. True when a run would store a picture.
///
/// `config` is as a harvester thread has it: short configurations filled up with empty lines.
bool explain_harvest(std::span<const TradeRecord> trades, std::size_t index,
                     const HarvestConfig& config, const RawGet& get, const Tell& tell);

}  // namespace toplist::ctl
