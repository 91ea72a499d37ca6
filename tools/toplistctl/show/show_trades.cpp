#include "toplistctl/json.h"
#include "toplistctl/show/show.h"
#include "toplistctl/table.h"

namespace toplist::ctl {
namespace {

std::string trades_table(const SiteData& site) {
  Table table({{"RECORD", Table::Align::right},
               {"ID", Table::Align::right},
               {"STATUS", Table::Align::right},
               {"ACTIVE"},
               {"DOMAIN"},
               {"URL"}});
  std::size_t record = 0;
  for (const TradeRecord& trade : site.trades) {
    table.add_row({std::to_string(++record), std::to_string(trade.trade_id),
                   std::to_string(trade.status), is_active(trade) ? "yes" : "no",
                   std::string(domain_of(trade)), std::string(url_of(trade))});
  }
  return table.text();
}

std::string trades_json(const SiteData& site) {
  Json list = Json::array();
  for (const TradeRecord& trade : site.trades) {
    list.push_back({{"record", list.size() + 1},
                    {"id", trade.trade_id},
                    {"status", trade.status},
                    {"active", is_active(trade)},
                    {"domain", domain_of(trade)},
                    {"url", url_of(trade)}});
  }
  return json_text(list);
}

}  // namespace

std::string show_trades(const SiteData& site, Format format) {
  return format == Format::json ? trades_json(site) : trades_table(site);
}

}  // namespace toplist::ctl
