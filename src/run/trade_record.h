#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace toplist {

inline constexpr const char* kTradesPath = "d/t/index";

/// A database of fewer trades counts as not fully loaded (contract: ten-records).
inline constexpr std::size_t kFewestTrades = 10;

/// One trade as in "d/t/index": 996 bytes, little-endian, without any padding.
///
/// The file is a plain array of these, without header or trailer, written by the rest of the site.
/// Members named `reserved_` and their offset belong to the site and are kept as stored. The values
/// below are the defaults for bytes that the file does not contain.
struct TradeRecord {
  std::int32_t trade_id = -1;
  char domain[76] = {};
  char url[120] = {};
  char reserved_200[15] = {};
  char reserved_215[50] = {};
  char reserved_265[23] = {};
  std::int32_t reserved_288 = 0;
  char reserved_292[15] = {};
  char reserved_307[513] = {};
  std::int32_t reserved_820 = 0;
  std::int32_t status = 0;  ///< Exactly 1: the trade is active and gets a statistics row.
  std::int32_t reserved_828 = 1;
  std::int32_t reserved_832 = -1;
  std::int32_t reserved_836 = -1;
  std::int32_t reserved_840 = -1;
  std::int32_t reserved_844 = -1;
  char reserved_848[32] = {};
  std::int32_t reserved_880 = 1;
  std::int32_t reserved_884[28] = {};
};

static_assert(sizeof(TradeRecord) == 996 && offsetof(TradeRecord, status) == 824 &&
              offsetof(TradeRecord, reserved_884) == 884);
static_assert(std::is_trivially_copyable_v<TradeRecord>);
static_assert(
    std::endian::native == std::endian::little,
    "toplist needs a little-endian processor: it takes the records of \"d/t/index\" as they "
    "stand in the file");

/// Whether the trade gets a statistics row, so that toplists can show it.
inline bool is_active(const TradeRecord& record) { return record.status == 1; }

/// The record's domain and url, up to the first NUL, as views into `record`. The writer leaves a
/// NUL inside each field. Without one the text continues, at most to the end of the record.
std::string_view domain_of(const TradeRecord& record);
std::string_view url_of(const TradeRecord& record);

/// The records of the database's bytes, the cut last one as load_trades() keeps it.
std::vector<TradeRecord> parse_trades(std::string_view bytes);

/// Fills `trades` with the records of the file at `path`, in file order; false when it cannot be
/// opened. A cut last record is kept (contract: cut-record). Its missing part has the defaults.
bool load_trades(const std::string& path, std::vector<TradeRecord>& trades);

}  // namespace toplist
