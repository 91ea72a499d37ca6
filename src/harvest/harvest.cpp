#include "harvest/harvest.h"

#include <pthread.h>

#include <algorithm>
#include <vector>

#include "harvest/harvest_worker.h"
#include "util/shell.h"

namespace toplist {
namespace {

void harvest_group(std::span<HarvestVisit> group, HarvestThread thread) {
  std::vector<pthread_t> started;
  started.reserve(group.size());
  for (HarvestVisit& visit : group) {
    pthread_t handle{};
    if (::pthread_create(&handle, nullptr, thread, &visit) == 0) started.push_back(handle);
  }
  for (const pthread_t handle : started) ::pthread_join(handle, nullptr);
}

}  // namespace

void harvest_thumbnails(std::span<const TradeRecord> trades, HarvestThread thread) {
  const RaisedDescriptorLimit raised;
  std::vector<HarvestVisit> visits;  // kept to the end: they own the open connections
  for (std::size_t i = kFirstHarvestedTrade; i < trades.size(); ++i) visits.push_back({&trades[i]});
  for (std::size_t first = 0; first < visits.size(); first += kHarvestThreads) {
    const std::size_t count = std::min(kHarvestThreads, visits.size() - first);
    harvest_group(std::span(visits).subspan(first, count), thread);
  }
}

void harvest_thumbnails(std::span<const TradeRecord> trades) {
  harvest_thumbnails(trades, harvest_worker);
}

}  // namespace toplist
