#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "run/steps.h"
#include "toplistctl/lib/site_view/prospect.h"

namespace toplist::ctl {

/// Takes a page that the next run writes: the path as it is defined, and the bytes, which are valid
/// for the call.
using TakePage = std::function<void(const std::string& path, std::string_view page)>;

/// The next run, carried out without doing anything: no line is logged, no thumbnail harvested, no
/// page written. A harvest could bring thumbnails that are not there yet; all else is as in a run
/// in the same second.
///
/// Fills a RunState by the run's own steps, which the caller gives in a run's order. Where a run
/// would end, the caller may go on.
class Rehearsal final : private Outcomes {
 public:
  explicit Rehearsal(RunState& run, TakePage take_page = {});

  /// Carries out one of kSteps.
  void carry_out(Step step);

  /// Builds the next toplist of the definitions as far as a run would. Takes its page.
  Prospect build(const ToplistDefinition& definition);

  /// Why the run ends before it has come to all toplists, in one line; empty when it does not.
  [[nodiscard]] const std::string& ending() const { return ending_; }

  /// Why the folder of required thumbnails cannot be listed, as errno tells; 0: it can, or is not
  /// needed.
  [[nodiscard]] int folder_error() const { return folder_error_; }

 private:
  void log(const Failure& failure) override;
  void unopened_folder(const std::string& folder) override;
  void harvest(std::span<const TradeRecord> /*trades*/) override {}
  bool write_page(const std::string& path, std::string_view page) override;

  Prospect try_to_build(const ToplistDefinition& definition);
  [[nodiscard]] std::optional<std::string> replaced_input(
      const ToplistDefinition& definition) const;
  [[nodiscard]] std::string why_ended() const;

  RunState& run_;
  TakePage take_page_;
  std::string failure_;  ///< the last one that ends a run
  std::string ending_;
  Prospect::Kind behind_ending_ = Prospect::Kind::unreached;  ///< what toplists behind it are
  int folder_error_ = 0;
  std::size_t record_ = 0;                              ///< of the toplist in hand, from 1
  bool page_written_ = false;                           ///< that toplist's
  std::map<std::filesystem::path, std::size_t> pages_;  ///< written so far, and their records
};

}  // namespace toplist::ctl
