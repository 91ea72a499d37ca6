#pragma once

#include <string>
#include <string_view>

#include "harvest/harvest_config.h"
#include "run/trade_record.h"

namespace toplist {

/// Where the external downloaders put what they fetch.
inline constexpr const char* kDownloadFolder = "l/sys/net/";

/// Whether the harvest fetches anything with this value of the configuration's fetch method.
bool is_fetch_method(std::string_view method);

/// Thread entry: harvests the thumbnail of one trade, a `TradeRecord*` that is only read, and ends
/// the thread. Reads the configuration "d/tl/vantaig" afresh.
void* harvest_worker(void* trade);

/// Visits the trade's page and stores the first acceptable picture that one of its own links wraps
/// as "<thumb_dir><domain>.jpg", then runs the image tool. Leaves nothing behind but files and log
/// lines; finding nothing is no failure.
void harvest_trade(const TradeRecord& trade);

/// The shell command line that runs the image tool on a stored thumbnail.
///
/// Its input path is named by the page's host, its output path by the trade's domain. Meant so: the
/// two coincide where the trade's page is on its own domain.
std::string image_tool_command(const HarvestConfig& config, std::string_view url_host,
                               std::string_view domain);

}  // namespace toplist
