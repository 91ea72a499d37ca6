#include "toplistctl/commands/check/report.h"

#include <map>
#include <set>

#include "toplistctl/lib/output/json.h"
#include "toplistctl/lib/output/table.h"

namespace toplist::ctl {
namespace {

std::string clean_text(const SiteView& site) {
  return "Nothing found: " + count_of(site.run.trades.size(), "trade") + ", " +
         std::to_string(site.run.rows.size()) + " of them active, and " +
         count_of(site.toplists.size(), "toplist") + ".\n";
}

std::string less_grave_text(std::size_t count) {
  if (count == 0) return "";
  return grouped(count) + " less grave left out; --min-effect note shows all.\n";
}

/// So many findings of a kind are told one by one; of one more than that, the last as well.
constexpr std::size_t kFew = 5;

std::string findings_table(const Diagnostics& findings, Repeats repeats) {
  std::map<const Kind*, std::size_t> left;
  std::map<const Kind*, std::size_t> told;
  for (const Diagnostic& finding : findings) ++left[finding.kind];
  Table table({{"FILE"}, {"PLACE"}, {"KIND"}, {"A RUN"}, {"WHAT"}});
  for (const Diagnostic& finding : findings) {
    const std::size_t rest = left[finding.kind]--;
    const std::size_t before = told[finding.kind]++;
    if (repeats == Repeats::few && before == kFew && rest > 1) {
      table.add_row({"", "", std::string(finding.kind->name), "",
                     "and " + grouped(rest) + " more; --all shows every one"});
    } else if (repeats == Repeats::all || before <= kFew) {
      table.add_row({finding.place.file, finding.place.position(), std::string(finding.kind->name),
                     std::string(effect_name(finding.effect()).text), finding.message});
    }
  }
  return table.text();
}

/// In the order of the findings, each kind once.
std::string advice_table(const Diagnostics& findings) {
  Table table({{"KIND"}, {"WHAT TO DO"}});
  std::set<const Kind*> told;
  for (const Diagnostic& finding : findings) {
    if (!told.insert(finding.kind).second) continue;
    table.add_row({std::string(finding.kind->name), std::string(finding.kind->advice)});
  }
  return table.text();
}

Json json_of(const Diagnostic& finding) {
  Json json = {{"kind", finding.kind->name},
               {"effect", effect_name(finding.effect()).word},
               {"file", finding.place.file}};
  const auto add = [&json](const char* unit, std::size_t number) {
    if (number != 0) json[unit] = number;
  };
  add("record", finding.place.record);
  add("line", finding.place.line);
  add("column", finding.place.column);
  json["message"] = finding.message;
  json["advice"] = finding.kind->advice;
  return json;
}

}  // namespace

std::string check_text(const SiteView& site, const Selection& selection, Repeats repeats) {
  const Diagnostics& findings = selection.findings;
  return (findings.empty() ? clean_text(site)
                           : findings_table(findings, repeats) + "\n" + advice_table(findings)) +
         less_grave_text(selection.less_grave);
}

std::string check_json(const Selection& selection) {
  Json list = Json::array();
  for (const Diagnostic& finding : selection.findings) list.push_back(json_of(finding));
  return json_text({{"clean", selection.findings.empty()},
                    {"less_grave", selection.less_grave},
                    {"findings", list}});
}

}  // namespace toplist::ctl
