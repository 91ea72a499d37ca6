#include <fmt/core.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "harvest/harvest_config.h"
#include "run/statistics.h"
#include "toplistctl/commands.h"
#include "toplistctl/lib/formats/csv.h"
#include "toplistctl/lib/output/console.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/site_files/site_change.h"
#include "toplistctl/lib/site_files/site_data.h"
#include "toplistctl/lib/site_files/site_root.h"
#include "util/text.h"

namespace toplist::ctl {
namespace {

struct Arguments {
  std::string site = ".";
  std::string trade;
  std::vector<std::string> values;  ///< "NAME=VALUE"
  bool escape = false;
  bool raw = false;
};

/// The one trade with this number or domain.
Expected<TradeRecord> find_trade(const std::vector<TradeRecord>& trades, const std::string& name) {
  std::vector<TradeRecord> found;
  std::copy_if(trades.begin(), trades.end(), std::back_inserter(found),
               [&name](const TradeRecord& trade) { return is_called(trade, name); });
  if (found.empty()) return failure(fmt::format("{} has no trade {}", kTradesPath, name));
  if (found.size() == 1) return found.front();
  return failure(
      fmt::format("{} trades have the domain {}. Use a number instead", found.size(), name));
}

/// The values as a CSV file of one line, for the import; `domain` is set to a new domain.
Expected<std::string> csv_of(const TradeRecord& trade, const std::vector<std::string>& values,
                             std::optional<std::string>& domain) {
  CsvText header, line;
  header.add("id");
  line.add(trade.trade_id);
  for (const std::string_view value : values) {
    const std::size_t equals = value.find('=');
    if (equals == std::string_view::npos) {
      return failure(fmt::format("\"{}\" is no NAME=VALUE", value));
    }
    header.add(value.substr(0, equals));
    line.add(value.substr(equals + 1));
    if (value.starts_with("domain=")) domain = value.substr(equals + 1);
  }
  header.end_row();
  line.end_row();
  return header.text() + line.text();
}

/// Moves a file that is named by the domain. Copies it if other trades still have the old domain.
Expected<void> move_file(SiteChange& change, const std::string& from, const std::string& to,
                         bool is_shared) {
  const auto bytes = read_file_if_there(from);
  if (!bytes) return tl::unexpected(bytes.error());
  if (!*bytes) return {};
  const auto taken = read_file_if_there(to);
  if (!taken) return tl::unexpected(taken.error());
  if (*taken) return failure(fmt::format("{} already exists. Remove it first", to));
  change.write(to, **bytes);
  if (!is_shared) change.remove(from);
  return {};
}

/// Moves the history and the picture of a domain.
Expected<void> move_files(SiteChange& change, const std::string& from, const std::string& to,
                          bool is_shared) {
  if (from.empty() || to.empty() || contains(from, "/")) return {};
  const auto moved = move_file(change, history_path(from), history_path(to), is_shared);
  if (!moved) return moved;
  const auto config = read_file_if_there(kHarvestConfigPath);
  if (!config) return tl::unexpected(config.error());
  if (!*config) return {};
  const std::string folder = parse_harvest_config(**config, "").thumb_dir();
  return move_file(change, folder + from + ".jpg", folder + to + ".jpg", is_shared);
}

/// Adds the new values to the change. Their faults go to `errors`.
Expected<std::vector<TradeChange>> note_values(SiteChange& change, const Arguments& arguments,
                                               Diagnostics& errors) {
  const auto before = read_site_trades();
  if (!before) return tl::unexpected(before.error());
  const auto trade = find_trade(before->trades, arguments.trade);
  if (!trade) return tl::unexpected(trade.error());
  std::optional<std::string> domain;
  const auto csv = csv_of(*trade, arguments.values, domain);
  if (!csv) return tl::unexpected(csv.error());

  const std::string old_domain(domain_of(*trade));
  const bool moves = domain && *domain != old_domain;
  const auto others_with = [&](std::string_view name) {
    return std::any_of(before->trades.begin(), before->trades.end(), [&](const TradeRecord& other) {
      return other.trade_id != trade->trade_id && domain_of(other) == name;
    });
  };
  if (moves && !domain->empty() && others_with(*domain)) {
    return failure(fmt::format("another trade has the domain {}", *domain));
  }
  const bool is_shared = others_with(old_domain);
  TradesImport how{.markup = arguments.raw      ? Markup::raw
                             : arguments.escape ? Markup::escape
                                                : Markup::refuse};
  if (moves && !is_shared) how.left_domain = old_domain;
  ImportedTrades imported =
      import_trades(*csv, before->trades, before->columns.value_or(""), errors, how);
  if (!errors.empty()) return imported.changes;
  write_trades(change, *before, imported);
  if (moves) {
    const auto moved = move_files(change, old_domain, *domain, is_shared);
    if (!moved) return tl::unexpected(moved.error());
  }
  return std::move(imported.changes);
}

Expected<int> set(const Arguments& arguments) {
  if (const auto entered = enter_site(arguments.site); !entered) {
    return tl::unexpected(entered.error());
  }
  auto change = SiteChange::begin("set " + arguments.trade);
  if (!change) return tl::unexpected(change.error());
  Diagnostics errors;
  const auto changes = note_values(*change, arguments, errors);
  if (!changes) return tl::unexpected(nothing_changed(changes.error()));
  if (!errors.empty()) {
    for (const Diagnostic& error : errors) warn(error.message);
    warn(kNothingChanged);
    return kExitFindings;
  }
  const auto done = change->commit();
  if (!done) return tl::unexpected(done.error());
  std::string text;
  for (const TradeChange& one : *changes) text += one.text();
  return print(text.empty() ? "Nothing to change.\n" : text);
}

}  // namespace

void add_set_command(const Command& program) {
  const auto arguments = std::make_shared<Arguments>();
  const Command command = program.add_command("set", "Change one trade");
  add_site_option(command, arguments->site);
  command.text("trade", "TRADE", arguments->trade, "Its number or domain").required();
  command
      .texts("value", "NAME=VALUE", arguments->values,
             "status, domain, url, title, description, picture, att00 to att99, and the new value")
      .required();
  const Option escape = command.flag("--escape", arguments->escape,
                                     "Write \"<\", \"&\" and quotes in texts as entities");
  command.flag("--raw", arguments->raw, "Take texts as they are, with HTML").excludes(escape);
  command.footer(
      "Examples:\n"
      "  toplistctl set 101 status=0\n"
      "  toplistctl set tea.example domain=tea-house.example title=\"The tea house\"\n"
      "Exit status: 0 done, 1 a value cannot be set, 2 not done.");
  command.run([arguments] { return set(*arguments); });
}

}  // namespace toplist::ctl
