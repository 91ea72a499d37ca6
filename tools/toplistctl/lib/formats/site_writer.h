#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "run/trade_record.h"
#include "run/trade_row.h"

/// Encoders for the data files of a site, the counterpart of the program's readers.
///
/// Each function appends one record to the bytes of one file, or encodes a whole small file; the
/// caller writes the bytes to the site's file. These files cannot escape their field separator, so
/// texts must not contain "|" or a line feed. Every record ends with a "|" and a line feed. The
/// line feed belongs to the first field of the next record, which the readers ignore.
namespace toplist::ctl {

/// A record of "d/t/index" whose other members have the site's defaults. Texts are cut to the size
/// of their fields without the final NUL (75 and 119 bytes).
TradeRecord make_trade(std::int32_t id, std::string_view domain, std::string_view url,
                       std::int32_t status = 1);

/// "d/t/index": 996 bytes per trade.
void append_trade(std::string& file, const TradeRecord& trade);

/// One trade's figures in "d/t/sum". The percentages of the blocks are not stored.
struct SumRecord {
  std::int32_t id = -1;
  std::array<PeriodBlock, 3> periods{};  ///< 60, 24 and 07
};

/// "d/t/sum": 44 fields per trade, of which 14 per period: 8 counters in the order of the files
/// (cef comes seventh), 3 that toplist does not read, the 3 further values.
void append_sum(std::string& file, const SumRecord& record);

/// "d/h/<domain>.his": 30 fields per record. `day` is the first field, which is not read. Only the
/// eight counters of `counters` are stored.
void append_history(std::string& file, std::int32_t day, const PeriodBlock& counters);

/// First line of "d/tl/tl.a1": the names of the columns after the domain. Every later line must
/// have as many values as there are names.
void append_column_header(std::string& file, std::span<const std::string_view> names);

/// A further line of "d/tl/tl.a1": an ignored field, the domain and its values. A value may hold
/// alternatives separated by ";", one of which a run picks.
void append_columns(std::string& file, std::string_view domain,
                    std::span<const std::string_view> values);

/// One toplist of "d/tl/tl".
struct Definition {
  std::string template_name;  ///< file name below "d/tl/"
  std::string output_path;    ///< relative to the site's root
  std::string order_by;       ///< "1" to "60"
  std::string mode = "1";     ///< "1": built only with the right check value; "2": always
  std::string check = {};     ///< SHA-1 of the template in 40 hexadecimal digits
};

/// "d/tl/tl": 9 fields per toplist, one toplist per line.
void append_definition(std::string& file, const Definition& definition);

/// One setting of "d/tl/tl.ext": 3 fields. `setting` is a key, "=" and a value, e.g. "rin60=10".
void append_setting(std::string& file, std::string_view template_name, std::string_view setting);

/// "d/gr/<group>": 13 fields per record, of which the first, the group's own, names it.
std::string encode_group(std::string_view name, std::span<const std::int32_t> member_ids);

/// "d/tl/vantaig", one value per line.
struct HarvestFile {
  std::string thumb_dir = "l/thumbs/";  ///< ends with "/"
  std::string image_tool = {};
  std::string image_tool_args = {};
  std::string unused = {};
  std::string fetch_method = "0";        ///< "0" to "3"
  std::string thumbnail_optional = "1";  ///< "0": trades without a thumbnail are not shown
  std::string harvest = "0";             ///< "1" to "24": harvest in every run
};

std::string encode_harvest_file(const HarvestFile& values);

}  // namespace toplist::ctl
