#include "run/trade_record.h"

#include <algorithm>

#include "util/file.h"
#include "util/large_pages.h"

namespace toplist {
namespace {

/// How many records at a time get their initial values and then their bytes. So many fit into the
/// processor's cache.
constexpr std::size_t kBlockRecords = 64;

std::size_t records_in(std::size_t bytes) {
  return (bytes + sizeof(TradeRecord) - 1) / sizeof(TradeRecord);
}

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

std::vector<TradeRecord> parse_trades(std::string_view bytes) {
  std::vector<TradeRecord> trades(records_in(bytes.size()));
  bytes.copy(reinterpret_cast<char*>(trades.data()), bytes.size());
  return trades;
}

bool load_trades(const std::string& path, std::vector<TradeRecord>& trades) {
  const UniqueFd fd = open_for_reading(path);
  if (!fd) return false;
  const std::size_t size = regular_file_size(fd.get());
  trades.clear();
  trades.reserve(records_in(size));
  prefer_large_pages(trades.data(), trades.capacity() * sizeof(TradeRecord));
  std::size_t length = 0;
  for (std::size_t left = size; left > 0; left -= length) {
    length = std::min(left, kBlockRecords * sizeof(TradeRecord));
    const std::size_t first = trades.size();
    trades.resize(first + records_in(length));
    const std::size_t read =
        read_fully(fd.get(), reinterpret_cast<char*>(trades.data() + first), length);
    if (read < length) {
      // After a failed read, the record that it should fill stays, and there are no further ones.
      trades.resize(first + read / sizeof(TradeRecord) + 1);
      break;
    }
  }
  return true;
}

}  // namespace toplist
