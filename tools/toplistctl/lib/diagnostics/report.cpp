#include "toplistctl/lib/diagnostics/report.h"

#include <map>
#include <set>
#include <vector>

#include "toplistctl/lib/output/records.h"

namespace toplist::ctl {
namespace {

/// Findings of a kind are left out only if that saves more than the line that counts them.
constexpr std::size_t kFew = 5;

/// Each kind once, in the order of the diagnostics.
std::vector<const Kind*> kinds_of(const Diagnostics& diagnostics) {
  std::vector<const Kind*> kinds;
  std::set<const Kind*> known;
  for (const Diagnostic& diagnostic : diagnostics) {
    if (known.insert(diagnostic.kind).second) kinds.push_back(diagnostic.kind);
  }
  return kinds;
}

std::string findings_table(const Diagnostics& diagnostics, Repeats repeats) {
  std::map<const Kind*, std::size_t> counts;
  std::map<const Kind*, std::size_t> listed;
  for (const Diagnostic& diagnostic : diagnostics) ++counts[diagnostic.kind];
  Table table({{"FILE"}, {"PLACE"}, {"KIND"}, {"EFFECT"}, {"MESSAGE"}});
  for (const Diagnostic& diagnostic : diagnostics) {
    const std::string kind(diagnostic.kind->name);
    const std::size_t count = counts[diagnostic.kind];
    const std::size_t before = listed[diagnostic.kind]++;
    const bool is_short = repeats == Repeats::few && count > kFew + 1;
    if (is_short && before == kFew) {
      table.add_row({"", "", kind, "",
                     fmt::format("and {} more; --all lists every one", grouped(count - kFew))});
    } else if (!is_short || before < kFew) {
      table.add_row({diagnostic.place.file, diagnostic.place.position(), kind,
                     std::string(effect_name(diagnostic.effect()).text), diagnostic.message});
    }
  }
  return table.text();
}

}  // namespace

std::string diagnostics_table(const Diagnostics& diagnostics, Repeats repeats) {
  Table advice({{"KIND"}, {"ADVICE"}});
  for (const Kind* kind : kinds_of(diagnostics)) {
    advice.add_row({std::string(kind->name), std::string(kind->advice)});
  }
  return findings_table(diagnostics, repeats) + "\n" + advice.text();
}

std::string diagnostics_lines(const Diagnostics& diagnostics, std::size_t most) {
  const std::size_t listed = std::min(diagnostics.size(), most);
  std::string text;
  for (std::size_t i = 0; i < listed; ++i) {
    text += diagnostics[i].place.prefix() + diagnostics[i].message + "\n";
  }
  const std::size_t rest = diagnostics.size() - listed;
  return rest == 0 ? text : text + fmt::format("and {} more\n", grouped(rest));
}

std::string advice_lines(const Diagnostics& diagnostics) {
  std::string text;
  for (const Kind* kind : kinds_of(diagnostics)) {
    text += fmt::format("{}: {}\n", kind->name, kind->advice);
  }
  return text;
}

Value diagnostics_value(const Diagnostics& diagnostics) {
  List list;
  for (const Diagnostic& diagnostic : diagnostics) {
    Members members{{"kind", diagnostic.kind->name},
                    {"effect", effect_name(diagnostic.effect()).word},
                    {"file", diagnostic.place.file}};
    const auto add_number = [&members](const char* unit, std::size_t number) {
      if (number != 0) members.emplace_back(unit, number);
    };
    add_number("record", diagnostic.place.record);
    add_number("line", diagnostic.place.line);
    add_number("column", diagnostic.place.column);
    members.emplace_back("message", diagnostic.message);
    members.emplace_back("advice", diagnostic.kind->advice);
    list.emplace_back(std::move(members));
  }
  return list;
}

}  // namespace toplist::ctl
