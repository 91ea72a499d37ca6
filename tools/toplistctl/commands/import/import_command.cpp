#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "run/statistics.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/command_line/site_option.h"
#include "toplistctl/lib/formats/csv_errors.h"
#include "toplistctl/lib/formats/figures_csv.h"
#include "toplistctl/lib/formats/histories.h"
#include "toplistctl/lib/formats/site_writer.h"
#include "toplistctl/lib/formats/trades_csv.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/site_change.h"
#include "toplistctl/lib/site_files/site_file.h"

namespace toplist::ctl {
namespace {

constexpr const char* kStandardInput = "-";

struct Arguments {
  std::string site = kCurrentDirectory;
  std::string file;

  [[nodiscard]] bool is_standard_input() const { return file == kStandardInput; }
};

int cannot(const char* what, const std::string& path, int error) {
  return fail(std::string("cannot ") + what + " " + path, error);
}

/// Tells what is wrong with the CSV; nothing has been written.
int refuse(const CsvErrors& errors, const Arguments& arguments) {
  const std::string name =
      (arguments.is_standard_input() ? "standard input" : arguments.file) + ": ";
  const std::vector<std::string> told = errors.told();
  for (const std::string& error : told) warn(std::string(name).append(error));
  const std::size_t more = errors.count() - told.size();
  if (more > 0) warn(name + "and " + std::to_string(more) + " more errors");
  warn("nothing was written");
  return kExitFindings;
}

/// The trade database; false, told on standard error, when it is there and cannot be opened.
bool load_database(std::vector<TradeRecord>& trades) {
  if (load_trades(kTradesPath, trades) || errno == ENOENT) return true;
  cannot("open", kTradesPath, errno);
  return false;
}

bool is_readable_or_missing(const SiteFile& file) {
  if (file.is_open() || file.error() == ENOENT) return true;
  cannot("open", file.path(), file.error());
  return false;
}

std::string_view bytes_of(const std::vector<TradeRecord>& trades) {
  return {reinterpret_cast<const char*>(trades.data()), trades.size() * sizeof(TradeRecord)};
}

/// A file of the site and what it is to hold.
struct NewContents {
  std::string path;
  std::string_view bytes;
};

int replace_files(const std::vector<NewContents>& contents, SiteChange& change) {
  for (const NewContents& file : contents) change.write(file.path, std::string(file.bytes));
  const auto done = change.commit();
  return done ? 0 : fail(done.error().text());
}

std::string trades_summary(const ImportedTrades& imported) {
  std::string text = "Trades: " + std::to_string(imported.trades.size() - imported.fillers) + ", " +
                     std::to_string(imported.added) + " of them new; " +
                     std::to_string(imported.removed) + " removed.\n";
  if (imported.fillers > 0) {
    text += "Added " + std::to_string(imported.fillers) +
            " records of no trade, with ids below 0: " + "a run takes fewer than " +
            std::to_string(kFewestTrades) + " for a database that is still being written.\n";
  }
  return text;
}

int trades(std::string_view csv, const Arguments& arguments, SiteChange& change) {
  std::vector<TradeRecord> before;
  const SiteFile columns(kExtraColumnsPath);
  if (!load_database(before) || !is_readable_or_missing(columns)) return kExitTrouble;
  CsvErrors errors;
  const ImportedTrades imported = import_trades(csv, before, columns.text(), errors);
  if (!errors.empty()) return refuse(errors, arguments);
  std::vector<NewContents> contents;
  if (bytes_of(before) != bytes_of(imported.trades)) {
    contents.push_back({kTradesPath, bytes_of(imported.trades)});
  }
  if (!columns.is_open() || columns.text() != imported.columns) {
    contents.push_back({kExtraColumnsPath, imported.columns});
  }
  const int status = replace_files(contents, change);
  return status == 0 ? print(trades_summary(imported)) : status;
}

int figures(std::string_view csv, const Arguments& arguments, SiteChange& change) {
  std::vector<TradeRecord> trades;
  const SiteFile sum(kSumPath);
  if (!load_database(trades) || !is_readable_or_missing(sum)) return kExitTrouble;
  HistoryFiles histories;
  const auto totals = [&histories](std::string_view domain) { return histories.totals(domain); };
  CsvErrors errors;
  const ImportedFigures imported = import_figures(csv, trades, sum.text(), totals, errors);
  if (!errors.empty()) return refuse(errors, arguments);
  if (histories.error() != 0) return cannot("open", histories.unopened(), histories.error());

  std::vector<std::string> texts;
  texts.reserve(imported.histories.size());
  std::vector<NewContents> contents;
  for (const auto& [domain, counters] : imported.histories) {
    site::append_history(texts.emplace_back(), 1, counters);
    contents.push_back({history_path(domain), texts.back()});
  }
  const bool new_sum = !sum.is_open() || sum.text() != imported.sum;
  if (new_sum) contents.push_back({kSumPath, imported.sum});
  if (const int status = replace_files(contents, change)) return status;
  return print(std::string(kSumPath) + (new_sum ? ": written. " : ": nothing to change. ") +
               std::to_string(texts.size()) + " histories written.\n");
}

struct Subject {
  const char* name;
  const char* description;
  int (*import)(std::string_view csv, const Arguments& arguments, SiteChange& change);
};
constexpr Subject kSubjects[] = {
    {"trades", "Make the lines of a CSV file the trades of the site, with their texts", trades},
    {"figures", "Put the figures of a CSV file into the site", figures},
};

int import(const Arguments& arguments, const Subject& subject) {
  // Before the site is entered, and without a run waiting for a slow pipe.
  FileBuffer csv;
  if (!csv.read(arguments.is_standard_input() ? "/dev/stdin" : arguments.file)) {
    return cannot("open", arguments.file, errno);
  }
  if (!enter_or_fail(arguments.site)) return kExitTrouble;
  auto change = SiteChange::begin(std::string("import ") + subject.name);
  if (!change) return fail(change.error().text());
  return subject.import(csv.text(), arguments, *change);
}

void add_subject(CLI::App& app, const Subject& subject, int& exit_status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand(subject.name, subject.description);
  add_site_option(*command, arguments->site);
  command->add_option("file", arguments->file, "The CSV file, \"-\" for standard input")
      ->type_name("FILE")
      ->required();
  command->footer("Example:\n  toplistctl export " + std::string(subject.name) + " >site.csv\n" +
                  "  toplistctl import " + subject.name + " site.csv");
  command->callback(
      [arguments, &exit_status, &subject] { exit_status = import(*arguments, subject); });
}

}  // namespace

void add_import_command(CLI::App& app, int& exit_status) {
  CLI::App* command = app.add_subcommand("import", "Write a site's trades or figures from CSV");
  command->require_subcommand(1);
  for (const Subject& subject : kSubjects) add_subject(*command, subject, exit_status);
}

}  // namespace toplist::ctl
