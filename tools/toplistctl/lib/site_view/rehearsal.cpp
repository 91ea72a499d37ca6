#include "toplistctl/lib/site_view/rehearsal.h"

#include <fmt/core.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "render/render.h"
#include "toplist/ranking.h"
#include "toplist/toplist_stage.h"
#include "toplistctl/lib/site_files/paths.h"
#include "toplistctl/lib/site_files/read_file.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;
using enum Prospect::Kind;

struct KindName {
  std::string_view word;
  std::string_view text;
};

/// In the order of Prospect::Kind.
constexpr std::array<KindName, 5> kKindNames{{
    {"built", "built"},
    {"skipped", "skipped"},
    {"stopped", "the run ends here"},
    {"unreached", "the run ends before"},
    {"unforeseen", "cannot be foreseen"},
}};

const KindName& name_of(Prospect::Kind kind) {
  return kKindNames.at(static_cast<std::size_t>(kind));
}

/// The files that a step reads.
std::vector<std::string> step_inputs(Step step, const RunState& run) {
  constexpr std::pair<Step, const char*> kFiles[] = {
      {load_trade_set, kTradesPath},        {read_configuration, kHarvestConfigPath},
      {build_row_set, kExtraColumnsPath},   {read_recent_figures, kSumPath},
      {read_definitions, kDefinitionsPath}, {read_settings, kSettingsPath},
  };
  std::vector<std::string> inputs;
  for (const auto& [reader, path] : kFiles) {
    if (reader == step) inputs.emplace_back(path);
  }
  if (step != add_histories) return inputs;
  for (const TradeRow& row : run.rows) inputs.push_back(history_path(row.domain));
  return inputs;
}

/// What a run would wait for, or read without end, instead of a file; nothing when it would not.
std::optional<std::string> endless_input(const std::vector<std::string>& inputs) {
  for (const std::string& input : inputs) {
    std::error_code ignored;  // what is not there cannot be opened: the run goes on from there
    const fs::file_status status = fs::status(input.c_str(), ignored);
    if (!fs::exists(status) || fs::is_regular_file(status) || fs::is_directory(status)) continue;
    return fmt::format("cannot read {}. It is not a regular file", input);
  }
  return std::nullopt;
}

/// Why a run could not open a file: asked once more, for a run's own steps do not tell.
std::string why_unopened(const std::string& path) {
  const Expected<std::string> text = read_file(path);
  return text ? "cannot open " + path : text.error().text();
}

std::string why_skipped(const ToplistDefinition& definition) {
  if (definition.build_mode == "1") return "its check value does not match the template";
  return fmt::format("its build mode is \"{}\"", definition.build_mode);
}

}  // namespace

std::vector<std::string> toplist_inputs(const ToplistDefinition& definition,
                                        const std::vector<ToplistSetting>& settings) {
  std::vector<std::string> inputs = {definition.template_path};
  const std::string template_name = definition.template_path.substr(kTemplateFolder.size());
  for (const ToplistSetting& setting : settings) {
    if (setting.key != kGroupKey || setting.template_name != template_name) continue;
    if (auto path = group_path(setting.value)) inputs.push_back(std::move(*path));
  }
  return inputs;
}

std::string_view Prospect::word() const { return name_of(kind).word; }

std::string Prospect::text() const {
  const std::string_view text = name_of(kind).text;
  return reason.empty() ? std::string(text) : fmt::format("{}: {}", text, reason);
}

bool ToplistView::is_called(std::string_view name) const {
  const std::string_view path = definition->template_path;
  return name == path || name == path.substr(kTemplateFolder.size()) ||
         name == definition->output_path;
}

Rehearsal::Rehearsal(RunState& run, TakePage take_page)
    : run_(run), take_page_(std::move(take_page)) {
  // As of an empty file, for steps that follow one which cannot be carried out.
  run_.config = parse_harvest_config("", "0");
}

void Rehearsal::end(std::string reason) {
  if (ending_.empty()) ending_ = std::move(reason);
}

void Rehearsal::carry_out(Step step) {
  if (auto endless = endless_input(step_inputs(step, run_))) return end(std::move(*endless));
  failure_.reset();
  if (step(run_, *this)) return;
  // Two ends are silent.
  end(failure_            ? *failure_
      : run_.rows.empty() ? "no trade is active"
                          : fmt::format("{} defines no toplist", kDefinitionsPath));
}

ToplistView Rehearsal::build(const ToplistDefinition& definition) {
  ToplistView view{.definition = &definition, .record = ++record_};
  const std::vector<std::string> inputs = toplist_inputs(definition, run_.settings);
  const auto endless = endless_input(inputs);
  if (!endless) select_rows(view);
  if (!ending_.empty()) {
    view.next_run = {after_ending_, ending_};
    return view;
  }
  view.next_run = endless ? Prospect{stopped, *endless} : try_to_build(view, inputs);
  const auto& [kind, reason, line] = view.next_run;
  if (kind == built || kind == skipped) return view;
  ending_ = fmt::format("at record {}, {}", record_, reason);
  if (kind == unforeseen) after_ending_ = kind;
  return view;
}

/// What build_toplist() does before it renders, but of all rows, and also of a toplist that is not
/// built.
void Rehearsal::select_rows(ToplistView& view) {
  std::vector<TradeRow*> ranking = run_.ranking;
  rank_rows(run_.rows, view.definition->order_by, ranking);
  view.allowed = may_be_built(*view.definition);
  view.ranking.assign(ranking.begin(), ranking.end());
  // Also where the run has ended: so the toplists after it are as they will be once it does not.
  if (view.allowed) run_.ranking = std::move(ranking);
  view.filters = read_filters(*view.definition, run_.settings, *this);
  for (const TradeRow* row : view.ranking) {
    const std::string_view filter = view.filters.dropped_by(*row);
    if (filter.empty()) {
      view.passing.push_back(row);
    } else {
      ++view.dropped[filter];
    }
  }
}

Prospect Rehearsal::try_to_build(const ToplistView& view, const std::vector<std::string>& inputs) {
  for (const std::string& input : inputs) {
    const auto page = pages_.find(real_path(input));
    if (page == pages_.end()) continue;
    return {unforeseen, fmt::format("{} is the page of record {}", input, page->second)};
  }
  if (!view.allowed) return {skipped, why_skipped(*view.definition)};
  const std::span shown = std::span(view.passing).first(std::min(view.passing.size(), kRankCount));
  failure_.reset();
  try {
    const bool written =
        render_toplist(view.definition->template_path, view.definition->output_path, shown, *this);
    return written ? Prospect{} : Prospect{stopped, *failure_};
  } catch (const StrayMark& stray) {
    return {stopped, stray.what(), stray.line()};
  }
}

void Rehearsal::log(const Failure& failure) {
  if (failure.severity != Severity::run_ends || failure_) return;
  const bool unopened = failure.code == std::string_view(kUnopenedFileCode);
  failure_ = unopened ? why_unopened(failure.subject) : failure.subject;
}

void Rehearsal::unopened_folder(const std::string& folder) {
  std::error_code error;
  fs::directory_iterator(folder, error);
  folder_error_ = Error{"cannot open", folder, error.value(), {}};
  failure_ = folder_error_->text();
}

bool Rehearsal::write_page(const std::string& path, std::string_view page) {
  if (const auto why = why_not_writable(path)) {
    failure_ = why->text();
    return false;
  }
  pages_.insert_or_assign(real_path(path), record_);
  if (take_page_) take_page_(path, page);
  return true;
}

}  // namespace toplist::ctl
