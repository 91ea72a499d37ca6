#include "toplistctl/lib/site_view/rehearsal.h"

#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include "render/render.h"
#include "toplist/filters.h"
#include "toplist/toplist_stage.h"
#include "toplistctl/lib/site_files/real_path.h"
#include "toplistctl/lib/site_files/writable.h"
#include "toplistctl/lib/site_view/run_inputs.h"

namespace toplist::ctl {
namespace {

using Kind = Prospect::Kind;

std::string cannot_open(const std::string& path, int error) {
  return "cannot open " + path + ": " + std::generic_category().message(error);
}

Prospect skipped(const ToplistDefinition& definition) {
  if (definition.build_mode == "1") return {Kind::skipped, "its check value is not the template's"};
  return {Kind::skipped, "its build mode is \"" + definition.build_mode + '"'};
}

}  // namespace

Rehearsal::Rehearsal(RunState& run, TakePage take_page)
    : run_(run), take_page_(std::move(take_page)) {}

void Rehearsal::carry_out(Step step) {
  if (!step(run_, *this) && ending_.empty()) ending_ = why_ended();
}

std::string Rehearsal::why_ended() const {
  if (!failure_.empty()) return failure_;
  // Two ends are silent.
  if (run_.rows.empty()) return "no trade is active";
  return std::string(kDefinitionsPath) + " defines no toplist";
}

Prospect Rehearsal::build(const ToplistDefinition& definition) {
  ++record_;
  if (!ending_.empty()) return {behind_ending_, ending_};
  Prospect prospect = try_to_build(definition);
  if (prospect.kind == Kind::stopped || prospect.kind == Kind::unforeseen) {
    ending_ = "at record " + std::to_string(record_) + ", " + prospect.reason;
    if (prospect.kind == Kind::unforeseen) behind_ending_ = Kind::unforeseen;
  }
  return prospect;
}

Prospect Rehearsal::try_to_build(const ToplistDefinition& definition) {
  if (auto replaced = replaced_input(definition)) return {Kind::unforeseen, std::move(*replaced)};
  page_written_ = false;
  try {
    if (!build_toplist(run_, definition, *this)) return {Kind::stopped, failure_};
  } catch (const StrayMark& stray) {
    return {Kind::stopped, stray.what(), stray.line()};
  }
  return page_written_ ? Prospect{} : skipped(definition);
}

std::optional<std::string> Rehearsal::replaced_input(const ToplistDefinition& definition) const {
  for (const std::string& input : toplist_inputs(definition, run_.settings)) {
    const auto page = pages_.find(real_path(input));
    if (page == pages_.end()) continue;
    return input + " is the page of record " + std::to_string(page->second);
  }
  return std::nullopt;
}

void Rehearsal::log(const Failure& failure) {
  const int error = errno;
  if (failure.severity != Severity::run_ends) return;
  failure_ = failure.code == std::string_view(kUnopenedFileCode)
                 ? cannot_open(failure.subject, error)
                 : failure.subject;
}

void Rehearsal::unopened_folder(const std::string& folder) {
  folder_error_ = errno;
  failure_ = cannot_open(folder, folder_error_);
}

bool Rehearsal::write_page(const std::string& path, std::string_view page) {
  if (!can_be_written(path)) return false;
  page_written_ = true;
  pages_.insert_or_assign(real_path(path), record_);
  if (take_page_) take_page_(path, page);
  return true;
}

}  // namespace toplist::ctl
