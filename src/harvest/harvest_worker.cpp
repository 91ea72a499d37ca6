#include "harvest/harvest_worker.h"

#include <pthread.h>

#include <new>
#include <stdexcept>
#include <string>

#include "harvest/harvest_config.h"
#include "harvest/picture_search.h"
#include "run/sys_log.h"
#include "util/file.h"

namespace toplist {

void harvest_trade(const TradeRecord& trade, const RawFetch& raw_fetch) {
  FileBuffer config_file;
  if (!config_file.read(kHarvestConfigPath)) {
    log_failure(unopened_file(kHarvestConfigPath, Severity::run_ends));
    return;
  }
  const HarvestConfig config = parse_harvest_config(config_file.text(), "");
  const TradeHarvest harvest(trade, config, raw_fetch);
  const std::string page = harvest.fetch_page();

  // With a longer file the harvest ends here, after the fetch, and logs nothing. A shorter one has
  // been padded, so the message is never written (contract: seven-lines).
  if (config.lines.size() < HarvestConfig::kLineCount) {
    log_failure(content_error(std::string("Invalid data found in file ") + kHarvestConfigPath));
  }
  if (config.lines.size() != HarvestConfig::kLineCount) return;
  search_picture(page, harvest.host(),
                 {.fetch = [&harvest](const std::string& url,
                                      std::string& image) { harvest.fetch_picture(url, image); },
                  .store = [&harvest](std::string& image) { harvest.store_thumbnail(image); }});
}

void* harvest_worker(void* visit) {
  auto& [trade, held_open] = *static_cast<HarvestVisit*>(visit);
  // Without enough memory this trade gets no thumbnail. The main thread finds out whether the run
  // can continue.
  try {
    harvest_trade(*trade, [&held = held_open](const std::string& host, const std::string& url) {
      return fetch_raw_http(host, url, held);
    });
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  }
  ::pthread_exit(nullptr);
}

}  // namespace toplist
