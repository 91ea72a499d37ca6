#include <fmt/core.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "run/statistics.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/formats/figures_csv.h"
#include "toplistctl/lib/formats/site_writer.h"
#include "toplistctl/lib/formats/trades_csv.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_change.h"
#include "toplistctl/lib/site_files/site_data.h"
#include "toplistctl/lib/site_files/site_root.h"

namespace toplist::ctl {
namespace {

using What = TradeChange::What;

struct Arguments {
  std::string site = ".";
  std::string file;
  bool dry_run = false;
  bool escape = false;
  bool raw = false;
  bool remove_missing = false;
  bool force = false;

  [[nodiscard]] bool is_standard_input() const { return file == "-"; }
  [[nodiscard]] std::string name() const { return is_standard_input() ? "standard input" : file; }
};

/// An import of the CSV text; without a change it is a dry run.
using Import = Expected<int> (*)(std::string_view csv, const Arguments& arguments,
                                 std::optional<SiteChange>& change);

/// Makes the change, if there is to be one, and prints what it does to the trades: in a dry run
/// every value, otherwise the trades that go.
Expected<int> finish(std::optional<SiteChange>& change, const std::vector<TradeChange>& changes,
                     std::string summary) {
  const auto done = change ? change->commit() : Expected<void>();
  if (!done) return tl::unexpected(done.error());
  std::string text;
  for (const TradeChange& one : changes) {
    if (!change || one.what == What::removed) text += one.text();
  }
  if (!change) summary += "This was a dry run: nothing was changed.\n";
  return print(text + summary);
}

/// A tenth of the trades is what an import may remove without --force.
bool removes_too_many(std::size_t removed, std::size_t trades) { return removed * 10 > trades; }

Expected<int> import_trades_csv(std::string_view csv, const Arguments& arguments,
                                std::optional<SiteChange>& change) {
  const auto before = read_site_trades();
  if (!before) return tl::unexpected(nothing_changed(before.error()));
  const Markup markup = arguments.raw      ? Markup::raw
                        : arguments.escape ? Markup::escape
                                           : Markup::refuse;
  Diagnostics errors;
  const ImportedTrades imported =
      import_trades(csv, before->trades, before->columns.value_or(""), errors,
                    {.markup = markup, .remove_missing = arguments.remove_missing});
  if (!errors.empty()) return refuse(std::move(errors), arguments.name());

  const auto count = [&imported](What what) { return count_of(imported.changes, what); };
  const std::size_t removed = count(What::removed);
  const std::size_t trades = removed + count(What::changed) + imported.unchanged;
  if (removes_too_many(removed, trades) && !arguments.force) {
    warn(
        fmt::format("{} does not list {} of {} trades. Use --force to remove more than a tenth. {}",
                    arguments.name(), removed, trades, kNothingChanged));
    return kExitFindings;
  }
  if (change) write_trades(*change, *before, imported);
  std::string summary =
      fmt::format("Trades: {} added, {} changed, {} unchanged, {} removed.\n", count(What::added),
                  count(What::changed), imported.unchanged, removed);
  if (imported.fillers > 0) {
    summary += fmt::format(
        "Added {} records that belong to no trade, with ids below 0. A run takes fewer than {} "
        "records for a database that is still being written.\n",
        imported.fillers, kFewestTrades);
  }
  return finish(change, imported.changes, std::move(summary));
}

Expected<int> import_figures_csv(std::string_view csv, const Arguments& arguments,
                                 std::optional<SiteChange>& change) {
  const auto trades = read_trades_if_there();
  if (!trades) return tl::unexpected(nothing_changed(trades.error()));
  const auto sum = read_file_if_there(kSumPath);
  if (!sum) return tl::unexpected(nothing_changed(sum.error()));
  Diagnostics errors;
  const auto imported = import_figures(csv, *trades, sum->value_or(""), read_history, errors);
  if (!imported) return tl::unexpected(nothing_changed(imported.error()));
  if (!errors.empty()) return refuse(std::move(errors), arguments.name());

  if (change && *sum != imported->sum) change->write(kSumPath, imported->sum);
  for (const auto& [domain, counters] : imported->histories) {
    std::string history;
    append_history(history, 1, counters);
    if (change) change->write(history_path(domain), std::move(history));
  }
  return finish(change, imported->changes,
                fmt::format("Figures: {} of {} changed, {} unchanged; {} histories replaced.\n",
                            imported->changes.size(), ctl::count_of(trades->size(), "trade"),
                            trades->size() - imported->changes.size(), imported->histories.size()));
}

Expected<int> import(const Arguments& arguments, const std::string& subject, Import take) {
  // Before the site is entered, and without a run waiting for a slow pipe.
  const auto csv = read_input(arguments.is_standard_input() ? "/dev/stdin" : arguments.file);
  if (!csv) return tl::unexpected(csv.error());
  if (const auto entered = enter_site(arguments.site); !entered) {
    return tl::unexpected(entered.error());
  }
  std::optional<SiteChange> change;
  if (!arguments.dry_run) {
    auto begun = SiteChange::begin("import " + subject);
    if (!begun) return tl::unexpected(begun.error());
    change.emplace(std::move(*begun));
  }
  return take(*csv, arguments, change);
}

/// Adds "import SUBJECT"; the caller adds further options.
std::pair<Command, std::shared_ptr<Arguments>> add_subject(const Command& parent,
                                                           const std::string& subject,
                                                           const std::string& about, Import take) {
  auto arguments = std::make_shared<Arguments>();
  const Command command = parent.add_command(subject, about);
  add_site_option(command, arguments->site);
  command.text("file", "FILE", arguments->file, "The CSV file, \"-\" for standard input")
      .required();
  command.flag("--dry-run", arguments->dry_run,
               "Print each value that would change; write nothing");
  command.footer(fmt::format(
      "Example:\n  toplistctl export {0} >site.csv\n  toplistctl import {0} site.csv", subject));
  command.run([arguments, subject, take] { return import(*arguments, subject, take); });
  return {command, std::move(arguments)};
}

}  // namespace

void add_import_command(const Command& program) {
  const Command command =
      program.add_command("import", "Add and change trades and figures from CSV");
  command.require_command();
  const auto [trades, arguments] =
      add_subject(command, "trades", "Add and change trades, with their texts", import_trades_csv);
  trades.flag("--remove-missing", arguments->remove_missing,
              "Remove the trades that the file does not list");
  trades.flag("--force", arguments->force, "Remove more than a tenth of the trades");
  const Option escape = trades.flag("--escape", arguments->escape,
                                    "Write \"<\", \"&\" and quotes in texts as entities");
  trades.flag("--raw", arguments->raw, "Take texts as they are, with HTML").excludes(escape);
  add_subject(command, "figures", "Replace figures", import_figures_csv);
}

}  // namespace toplist::ctl
