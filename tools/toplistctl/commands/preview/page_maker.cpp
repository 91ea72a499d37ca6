#include "toplistctl/commands/preview/page_maker.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

#include "render/render.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/diagnostics/report.h"
#include "toplistctl/lib/formats/order_names.h"
#include "toplistctl/lib/site_files/paths.h"
#include "toplistctl/lib/site_files/public_file.h"
#include "toplistctl/lib/site_files/read_file.h"
#include "toplistctl/lib/templates/check_values.h"
#include "toplistctl/lib/templates/source.h"
#include "toplistctl/lib/templates/template_check.h"
#include "toplistctl/lib/templates/template_walk.h"
#include "util/shell.h"

namespace toplist::ctl {
namespace {

namespace fs = std::filesystem;

/// A page with more is read again once these are fixed.
constexpr std::size_t kMostFindings = 50;

/// One toplist's page, made of its source or its template.
struct Draft {
  const ToplistView* toplist;
  std::optional<std::string> page = {};  ///< nothing when an error keeps it from being made
  Diagnostics errors = {};    ///< that keep values out of the page, or the page as a whole
  Diagnostics findings = {};  ///< all others
  std::size_t places = 0;     ///< ranks that the template names
  std::size_t shown = 0;      ///< those of them that have a trade
  bool has_source = false;
  bool is_installed = false;  ///< the next run would build just this template

  /// Whether the next run writes it, if the source is installed before.
  [[nodiscard]] bool will_be_built() const {
    const Prospect& next_run = toplist->next_run;
    return next_run.is_built() || (next_run.kind == Prospect::Kind::skipped && !is_installed &&
                                   toplist->definition->build_mode == "1");
  }
};

class SnapshotMaker {
 public:
  SnapshotMaker(const std::string& site, const Snapshot& before) : dir_(site), before_(before) {}

  Snapshot make() {
    for (const char* path : {kDefinitionsPath, kSettingsPath, kHarvestConfigPath}) {
      snapshot_.inputs.emplace_back(path);
    }
    std::vector<Draft> drafts;
    for (const ToplistView& toplist : site_.toplists) drafts.push_back(draft_of(toplist));
    // Of several toplists with the same page, a run writes the last one over the others.
    std::map<std::string, const Draft*> winners;
    for (const Draft& draft : drafts) {
      const Draft*& winner = winners[url_of_page(*draft.toplist)];
      if (winner == nullptr || draft.will_be_built() || !winner->will_be_built()) winner = &draft;
    }
    List toplists;
    for (const Draft& draft : drafts) {
      const Draft& winner = *winners[url_of_page(*draft.toplist)];
      const std::string url =
          &winner == &draft ? url_of_page(*draft.toplist) : url_of_record(*draft.toplist);
      add_page(url, draft);
      toplists.emplace_back(describe(draft, url, winner));
    }
    const bool is_empty = site_.run.rows.empty() || toplists.empty();
    snapshot_.state = {{"problem", is_empty ? Value(site_.rehearsal.ending()) : Value()},
                       {"toplists", std::move(toplists)}};
    return std::move(snapshot_);
  }

 private:
  static std::string url_of_record(const ToplistView& toplist) {
    return fmt::format("{}record/{}", kOwnFolder, toplist.record);
  }

  static std::string url_of_page(const ToplistView& toplist) {
    const fs::path path =
        real_path(toplist.definition->output_path.c_str()).lexically_relative(real_path("."));
    return is_public(path) ? "/" + path.string() : url_of_record(toplist);
  }

  Draft draft_of(const ToplistView& toplist) {
    const std::string& path = toplist.definition->template_path;
    std::vector<std::string> inputs = toplist_inputs(*toplist.definition, site_.run.settings);
    std::move(inputs.begin(), inputs.end(), std::back_inserter(snapshot_.inputs));
    const std::string source = path + std::string(kSourceSuffix);
    snapshot_.inputs.push_back(source);

    Draft draft{.toplist = &toplist};
    std::error_code ignored;  // of what is not there
    draft.has_source = fs::exists(source.c_str(), ignored);
    const Expected<std::string> text = read_file(path);
    if (draft.has_source) {
      const Expansion expansion = expand_source(source, [this](const std::string& file) {
        snapshot_.inputs.push_back(file);
        return read_file(file);
      });
      draft.is_installed = text && *text == expansion.text && toplist.allowed;
      draft.errors = expansion.errors;
      if (!draft.errors.empty()) return draft;
      make_page(expansion.text, draft, [&expansion](std::size_t line, std::size_t column) {
        return expansion.place_of(line, column);
      });
    } else if (text) {
      draft.is_installed = toplist.allowed;
      make_page(*text, draft, [&path](std::size_t line, std::size_t column) {
        return Place{.file = path, .line = line, .column = column};
      });
    } else {
      add(draft.errors, kinds::kMissingTemplate, {.file = path}, "{}", text.error().text());
    }
    return draft;
  }

  void make_page(const std::string& text, Draft& draft, const PlaceOf& place_of) {
    const ToplistView& toplist = *draft.toplist;
    const auto ranks = ranks_named(text, toplist.passing);
    draft.places = ranks.size();
    draft.shown = static_cast<std::size_t>(std::ranges::count_if(ranks, [&](std::int32_t rank) {
      return static_cast<std::size_t>(rank) < toplist.passing.size();
    }));
    check_template(text, use_in(site_, toplist), place_of, draft.findings);
    const auto first_finding =
        std::stable_partition(draft.findings.begin(), draft.findings.end(), blocks_lines);
    draft.errors.assign(draft.findings.begin(), first_finding);
    draft.findings.erase(draft.findings.begin(), first_finding);
    try {
      draft.page = render_template(toplist.definition->template_path, text, toplist.passing);
    } catch (const StrayMark&) {
      // It is one of the errors.
    }
  }

  void add_page(const std::string& url, const Draft& draft) {
    const auto last = before_.pages.find(url);
    std::string& page = snapshot_.pages[url];
    if (draft.page) {
      page = *draft.page;
    } else if (last != before_.pages.end()) {
      page = last->second;
    }
  }

  /// What makes the next run build what the preview shows; null when nothing is to be done.
  [[nodiscard]] Value install_command(const Draft& draft) const {
    if (draft.is_installed || !draft.page || draft.toplist->definition->build_mode == "3") {
      return {};
    }
    const std::string& path = draft.toplist->definition->template_path;
    const std::string site = dir_ == "." ? "" : fmt::format("--site {} ", shell_word(dir_));
    if (draft.has_source) {
      return fmt::format("toplistctl expand --install {}{}", site,
                         shell_word(path + std::string(kSourceSuffix)));
    }
    return fmt::format("toplistctl digest --update {}{}", site,
                       shell_word(path.substr(kTemplateFolder.size())));
  }

  static Value list_of(Diagnostics diagnostics) {
    diagnostics.resize(std::min(diagnostics.size(), kMostFindings));
    return diagnostics_value(diagnostics);
  }

  [[nodiscard]] Members describe(const Draft& draft, const std::string& url,
                                 const Draft& winner) const {
    const ToplistView& toplist = *draft.toplist;
    const ToplistDefinition& definition = *toplist.definition;
    return {
        {"url", url},
        {"page", definition.output_path},
        {"template", definition.template_path.substr(kTemplateFolder.size())},
        {"source", draft.has_source},
        {"record", toplist.record},
        {"order", order_value_name(definition.order_by)},
        {"places", draft.places},
        {"shown", draft.shown},
        {"passing", toplist.passing.size()},
        {"active", site_.run.rows.size()},
        {"built", toplist.next_run.is_built()},
        {"next_run", toplist.next_run.text()},
        {"installed", draft.is_installed},
        {"overwritten_by", &winner == &draft ? Value() : Value(winner.toplist->record)},
        {"install", install_command(draft)},
        {"errors", list_of(draft.errors)},
        {"findings", list_of(draft.findings)},
    };
  }

  const std::string& dir_;
  const Snapshot& before_;
  SiteView site_;
  Snapshot snapshot_;
};

}  // namespace

Snapshot make_snapshot(const std::string& site, const Snapshot& before) {
  return SnapshotMaker(site, before).make();
}

}  // namespace toplist::ctl
