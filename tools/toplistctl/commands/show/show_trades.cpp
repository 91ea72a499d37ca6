#include "toplistctl/commands/show/show.h"

namespace toplist::ctl {

std::string show_trades(const SiteView& site, Format format) {
  Records records({"record", "id", "status", "active", "domain", "url"});
  std::size_t record = 0;
  for (const TradeRecord& trade : site.run.trades) {
    records.add({++record, trade.trade_id, trade.status, is_active(trade), domain_of(trade),
                 url_of(trade)});
  }
  return records.text(format);
}

}  // namespace toplist::ctl
