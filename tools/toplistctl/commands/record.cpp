#include <fmt/core.h>

#include <csignal>
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

/// A file that ends too early is one that another program is writing: its figures would look like
/// a sudden drop for ever.
tl::unexpected<Error> cut_file(const char* path, const char* detail) {
  return failure(
      fmt::format("cannot use {}: {}. Nothing was recorded. Try again when the site has"
                  " written it, or run \"toplistctl check\".",
                  path, detail));
}

/// "d/t/index" -> a row for each active trade.
Expected<std::vector<TradeRow>> read_active_trades() {
  return read_file(kTradesPath).and_then([](const std::string& bytes) {
    std::vector<TradeRecord> trades(bytes.size() / sizeof(TradeRecord));
    if (bytes.size() % sizeof(TradeRecord) != 0) {
      return Expected<std::vector<TradeRow>>(cut_file(kTradesPath, "its last record is cut"));
    }
    if (trades.size() < kFewestTrades) {
      return Expected<std::vector<TradeRow>>(cut_file(kTradesPath, "it has fewer than 10 records"));
    }
    std::memcpy(trades.data(), bytes.data(), bytes.size());
    return Expected<std::vector<TradeRow>>(build_rows(trades));
  });
}

/// "d/h/<domain>.his" -> the rows' all-time figures, which stay 0 where there is no such file.
Expected<void> read_histories(std::vector<TradeRow>& rows) {
  for (TradeRow& row : rows) {
    const auto text = read_file_if_there(history_path(row.domain));
    if (!text) return tl::unexpected(text.error());
    if (*text) add_history(**text, row.periods[kPeriod99]);
  }
  return {};
}

/// Whether the text ends within a record. What follows the last record is a line feed at the most,
/// which counts as a first field of the next one.
bool ends_within_record(std::string_view sum) {
  std::array<std::string_view, kSumFields> record;
  std::size_t count = 0;
  for (FieldReader fields(sum); (count = next_record(fields, record)) == record.size();) {
  }
  return count > 1;
}

/// "d/t/sum" -> the rows' recent figures.
Expected<void> read_recent(std::vector<TradeRow>& rows) {
  const auto text = read_file(kSumPath);
  if (!text) return tl::unexpected(text.error());
  if (ends_within_record(*text)) return cut_file(kSumPath, "its last record is cut");
  read_recent_periods(*text, rows);
  return {};
}

Expected<std::vector<TradeRow>> read_figures() {
  auto rows = read_active_trades();
  if (!rows) return rows;
  return read_histories(*rows).and_then([&] { return read_recent(*rows); }).map([&] {
    return std::move(*rows);
  });
}

Expected<int> record(const Arguments& arguments) {
  // A file at the limit of its size is an error like a full disk, not the end of the process.
  std::signal(SIGXFSZ, [](int) {});
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
  const Command command = program.add_command("record", "Record the figures of all active trades");
  command.footer(
      "Adds a snapshot to l/sys/history.sqlite, an SQLite database. To be run every hour.\n"
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
