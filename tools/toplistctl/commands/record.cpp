#include <fmt/core.h>

#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
#include <utility>

#include "run/statistics.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/history/history.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "util/fields.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = ".";
  std::string user;
  std::string file;
  std::string keep = "14d,2y";
};

/// If a file ends too early, another program is writing it. A snapshot of it would look like a
/// sudden drop.
tl::unexpected<Error> cut_file(const char* path) {
  return failure(
      fmt::format("cannot use {}: it ends too early. Nothing was recorded. Try again when "
                  "the site has written it, or run \"toplistctl check\".",
                  path));
}

/// "d/t/index" -> a row for each active trade.
Expected<std::vector<TradeRow>> read_active_trades() {
  const auto bytes = read_file(kTradesPath);
  if (!bytes) return tl::unexpected(bytes.error());
  std::vector<TradeRecord> trades(bytes->size() / sizeof(TradeRecord));
  if (bytes->size() % sizeof(TradeRecord) != 0 || trades.size() < kFewestTrades) {
    return cut_file(kTradesPath);
  }
  std::memcpy(trades.data(), bytes->data(), bytes->size());
  return build_rows(trades);
}

/// Whether the text ends within a record. Only a line feed may follow the last record. It counts as
/// the first field of a next one.
bool ends_within_record(std::string_view sum) {
  FieldReader fields(sum);
  std::array<std::string_view, kSumFields> record;
  std::size_t count = record.size();
  while (count == record.size()) count = next_record(fields, record);
  return count > 1;
}

/// All-time figures stay 0 where there is no "d/h/<domain>.his".
Expected<std::vector<TradeRow>> read_figures() {
  auto rows = read_active_trades();
  if (!rows) return rows;
  for (TradeRow& row : *rows) {
    const auto history = read_file_if_there(history_path(row.domain));
    if (!history) return tl::unexpected(history.error());
    if (*history) add_history(**history, row.periods[kPeriod99]);
  }
  const auto sum = read_file(kSumPath);
  if (!sum) return tl::unexpected(sum.error());
  if (ends_within_record(*sum)) return cut_file(kSumPath);
  read_recent_periods(*sum, *rows);
  return rows;
}

Expected<int> record(const Arguments& arguments) {
  const std::string file =
      arguments.file.empty() ? kHistoryPath : std::filesystem::absolute(arguments.file).string();
  return enter_site(arguments.site, arguments.user)
      .and_then(read_figures)
      .and_then([&](const std::vector<TradeRow>& rows) {
        return record_snapshot(file, rows, std::time(nullptr), *parse_keep(arguments.keep));
      })
      .map([] { return 0; });
}

std::string check_keep(const std::string& text) {
  if (parse_keep(text)) return {};
  return fmt::format(
      "\"{}\" is not two spans of d (days) or y (years), the longer one last, such"
      " as 14d,2y",
      text);
}

}  // namespace

void add_record_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command = program.add_command("record", "Keep the figures of today in a database");
  command.footer(
      "Adds a snapshot to l/sys/history.sqlite, an SQLite database. Run it every hour.\n"
      "Exit status: 0 recorded, 2 nothing was recorded.\n"
      "Examples:\n"
      "  toplistctl record --site /srv/mysite\n"
      "  toplistctl record --site /srv/mysite --keep 30d,5y --into /tmp/figures.sqlite");
  add_site_option(command, arguments->site);
  add_user_option(command, arguments->user);
  command.text("--into", "FILE", arguments->file,
               "The database, instead of the site's l/sys/history.sqlite");
  command.checked("--keep", "SPANS", arguments->keep, check_keep,
                  "How long to keep a snapshot of each hour, and one of each day; 14d,2y if not "
                  "given");
  command.run([arguments] { return record(*arguments); });
}

}  // namespace toplist::ctl
