#include "run/trade_record.h"

#include <algorithm>

#include "util/file.h"

namespace toplist {
namespace {

std::string_view text_at(const TradeRecord& record, std::size_t offset) {
  const std::string_view bytes(reinterpret_cast<const char*>(&record), sizeof record);
  const std::string_view rest = bytes.substr(offset);
  return rest.substr(0, rest.find('\0'));
}

}  // namespace

std::string_view domain_of(const TradeRecord& record) {
  return text_at(record, offsetof(TradeRecord, domain));
}

std::string_view url_of(const TradeRecord& record) {
  return text_at(record, offsetof(TradeRecord, url));
}

bool load_trades(const std::string& path, std::vector<TradeRecord>& trades) {
  const UniqueFd fd = open_for_reading(path);
  if (!fd) return false;
  const std::size_t size = regular_file_size(fd.get());
  trades.assign((size + sizeof(TradeRecord) - 1) / sizeof(TradeRecord), TradeRecord{});
  const std::size_t read = read_fully(fd.get(), reinterpret_cast<char*>(trades.data()), size);
  // A failed read leaves the record that it was to fill, and none behind it.
  trades.resize(std::min(trades.size(), read / sizeof(TradeRecord) + 1));
  return true;
}

}  // namespace toplist
