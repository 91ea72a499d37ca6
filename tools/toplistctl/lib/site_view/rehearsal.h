#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "run/statistics.h"
#include "run/steps.h"
#include "toplist/filters.h"
#include "toplistctl/lib/diagnostics/error.h"

namespace toplist::ctl {

/// The files that every run needs, by their paths as it opens them.
inline constexpr std::array kNeededFiles{kTradesPath, kHarvestConfigPath, kExtraColumnsPath,
                                         kSumPath,    kDefinitionsPath,   kSettingsPath};

/// The files that a run reads when it builds the toplist: the template and the groups of its
/// settings.
std::vector<std::string> toplist_inputs(const ToplistDefinition& definition,
                                        const std::vector<ToplistSetting>& settings);

/// What the next run does with one toplist.
struct Prospect {
  enum class Kind {
    built,
    skipped,     ///< its build mode or check value keeps it from being built
    stopped,     ///< the run ends at it
    unreached,   ///< the run ends before it
    unforeseen,  ///< it, or one before it, reads what the same run has replaced by a page
  };

  Kind kind = Kind::built;
  std::string reason = {};  ///< Why it is not built, in one line; empty when it is.
  std::size_t line = 0;  ///< Of the template, from 1: of the stray mark that ends the run, if any.

  [[nodiscard]] bool is_built() const { return kind == Kind::built; }

  /// One word for programs: "built", "skipped", "stopped", "unreached", "unforeseen".
  [[nodiscard]] std::string_view word() const;

  /// One line for people, such as "skipped: its build mode is "3"".
  [[nodiscard]] std::string text() const;
};

/// One toplist as a run would build it now.
struct ToplistView {
  const ToplistDefinition* definition;
  std::size_t record;      ///< in "d/tl/tl", from 1
  Prospect next_run = {};  ///< what becomes of it then
  bool allowed = false;    ///< its mode and check value let it be built, if the run comes to it
  ToplistFilters filters = {};
  std::vector<const TradeRow*> ranking = {};  ///< all rows in the toplist's order
  std::vector<const TradeRow*> passing = {};  ///< those that no filter drops; in rank order
  /// How many trades each filter drops, by setting key or kThumbnailFilter. A trade counts for the
  /// first filter that drops it.
  std::map<std::string_view, std::size_t> dropped = {};

  /// Whether `name` is its template, with or without its folder, or its page.
  [[nodiscard]] bool is_called(std::string_view name) const;
};

/// Takes a page that the next run writes: the path as it is defined, and the bytes, which are valid
/// for the call.
using TakePage = std::function<void(const std::string& path, std::string_view page)>;

/// The next run, carried out without doing anything: no line is logged, no thumbnail harvested, no
/// page written. A harvest could bring thumbnails that are not there yet; all else is as in a run
/// in the same second.
///
/// Fills a RunState by the run's own steps, which the caller gives in a run's order. Where a run
/// would end, the caller may go on. A run would wait for the writer of a FIFO, or read a device
/// without end: here it ends there, and nothing is read.
class Rehearsal final : private Outcomes {
 public:
  explicit Rehearsal(RunState& run, TakePage take_page = {});

  /// Carries out one of kSteps.
  void carry_out(Step step);

  /// Builds the next toplist of the definitions as far as a run would, and takes its page. One that
  /// the run skips or does not reach is ranked and filtered as well.
  ToplistView build(const ToplistDefinition& definition);

  /// Why the run ends before it has come to all toplists, in one line; empty when it does not.
  [[nodiscard]] const std::string& ending() const { return ending_; }

  /// Why the folder of required thumbnails cannot be listed; nothing when it can, or is not needed.
  [[nodiscard]] const std::optional<Error>& folder_error() const { return folder_error_; }

 private:
  void log(const Failure& failure) override;
  void unopened_folder(const std::string& folder) override;
  void harvest(std::span<const TradeRecord> /*trades*/) override {}
  bool write_page(const std::string& path, std::string_view page) override;

  void end(std::string reason);
  void select_rows(ToplistView& view);
  Prospect try_to_build(const ToplistView& view, const std::vector<std::string>& inputs);

  RunState& run_;
  TakePage take_page_;
  std::optional<std::string> failure_;  ///< what ends the run, of the step or toplist in hand
  std::string ending_;
  Prospect::Kind after_ending_ = Prospect::Kind::unreached;  ///< what the toplists after it are
  std::optional<Error> folder_error_;
  std::size_t record_ = 0;                              ///< of the toplist in hand, from 1
  std::map<std::filesystem::path, std::size_t> pages_;  ///< written so far, and their records
};

}  // namespace toplist::ctl
