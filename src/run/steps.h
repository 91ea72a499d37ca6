#pragma once

#include <array>

#include "run/outcomes.h"
#include "run/run_state.h"

namespace toplist {

/// The steps before the toplists. Each reads files of the site into `run` and reports failures to
/// `outcomes`. The result is whether a run continues with the next step. The companion may continue
/// anyway, or run only the steps whose results it needs.
using Step = bool (*)(RunState& run, Outcomes& outcomes);

/// "d/t/index" -> trades. Also ends a run if there are fewer than kFewestTrades.
bool load_trade_set(RunState& run, Outcomes& outcomes);

/// "d/tl/vantaig" -> config.
bool read_configuration(RunState& run, Outcomes& outcomes);

/// Has the thumbnails harvested if the configuration asks for it.
bool harvest_if_enabled(RunState& run, Outcomes& outcomes);

/// trades -> rows and their first order; "d/tl/tl.a1" -> the rows' columns. Without active trades a
/// run ends here. That is not a failure, so nothing is logged.
bool build_row_set(RunState& run, Outcomes& outcomes);

/// "d/h/<domain>.his" -> the rows' all-time figures. A missing history is logged, and the run goes
/// on.
bool add_histories(RunState& run, Outcomes& outcomes);

/// "d/t/sum" -> the rows' recent figures and percentages.
bool read_recent_figures(RunState& run, Outcomes& outcomes);

/// "d/tl/tl" -> definitions. Without any a run ends; nothing is logged.
bool read_definitions(RunState& run, Outcomes& outcomes);

/// Picks the alternatives of the rows' columns.
bool pick_columns(RunState& run, Outcomes& outcomes);

/// "d/tl/tl.ext" -> settings.
bool read_settings(RunState& run, Outcomes& outcomes);

/// The names in the thumbnail folder -> the rows' marks, if the configuration requires thumbnails.
bool mark_missing_thumbnails(RunState& run, Outcomes& outcomes);

/// All steps in the order of a run.
inline constexpr std::array<Step, 10> kSteps{
    load_trade_set, read_configuration,      harvest_if_enabled, build_row_set,
    add_histories,  read_recent_figures,     read_definitions,   pick_columns,
    read_settings,  mark_missing_thumbnails,
};

/// A whole run in the working directory: the steps, then the toplists in file order, until one of
/// them ends the run. Throws StrayMark as render_toplist() does.
void carry_out(RunState& run, Outcomes& outcomes);

}  // namespace toplist
