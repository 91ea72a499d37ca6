#include "toplistctl/lib/site_files/read_trades.h"

#include <cstring>
#include <string>

#include "toplistctl/lib/site_files/read_file.h"

namespace toplist::ctl {

Expected<std::vector<TradeRecord>> read_trades() {
  return read_file(kTradesPath).map([](const std::string& bytes) {
    std::vector<TradeRecord> trades((bytes.size() + sizeof(TradeRecord) - 1) / sizeof(TradeRecord));
    if (!bytes.empty()) std::memcpy(trades.data(), bytes.data(), bytes.size());
    return trades;
  });
}

bool is_called(const TradeRecord& trade, std::string_view name) {
  return domain_of(trade) == name || std::to_string(trade.trade_id) == name;
}

}  // namespace toplist::ctl
