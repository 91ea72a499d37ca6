#include "harvest/harvest.h"

#include <pthread.h>

#include <algorithm>
#include <vector>

#include "harvest/harvest_worker.h"

namespace toplist {
namespace {

void harvest_group(std::span<TradeRecord> group, HarvestThread thread) {
  std::vector<pthread_t> started;
  started.reserve(group.size());
  for (TradeRecord& trade : group) {
    pthread_t handle{};
    if (::pthread_create(&handle, nullptr, thread, &trade) == 0) started.push_back(handle);
  }
  for (const pthread_t handle : started) ::pthread_join(handle, nullptr);
}

}  // namespace

void harvest_thumbnails(std::span<TradeRecord> trades, HarvestThread thread) {
  for (std::size_t first = kFirstHarvestedTrade; first < trades.size(); first += kHarvestThreads) {
    const std::size_t count = std::min(kHarvestThreads, trades.size() - first);
    harvest_group(trades.subspan(first, count), thread);
  }
}

void harvest_thumbnails(std::span<TradeRecord> trades) {
  harvest_thumbnails(trades, harvest_worker);
}

}  // namespace toplist
