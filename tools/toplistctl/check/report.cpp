#include "toplistctl/check/report.h"

#include <set>

#include "toplistctl/output/json.h"
#include "toplistctl/output/table.h"

namespace toplist::ctl {
namespace {

std::string clean_text(const SiteView& site) {
  return "Nothing found: " + count_of(site.run.trades.size(), "trade") + ", " +
         std::to_string(site.run.rows.size()) + " of them active, and " +
         count_of(site.toplists.size(), "toplist") + ".\n";
}

std::string findings_table(const Findings& findings) {
  Table table({{"FILE"}, {"PLACE"}, {"KIND"}, {"A RUN"}, {"WHAT"}});
  for (const Finding& finding : findings) {
    table.add_row({finding.file, finding.place.text(), std::string(finding.kind->name),
                   std::string(effect_text(finding.kind->effect)), finding.message});
  }
  return table.text();
}

/// In the order of the findings, each kind once.
std::string advice_table(const Findings& findings) {
  Table table({{"KIND"}, {"WHAT TO DO"}});
  std::set<const Kind*> told;
  for (const Finding& finding : findings) {
    if (!told.insert(finding.kind).second) continue;
    table.add_row({std::string(finding.kind->name), std::string(finding.kind->advice)});
  }
  return table.text();
}

Json json_of(const Finding& finding) {
  Json json = {{"kind", finding.kind->name},
               {"effect", effect_word(finding.kind->effect)},
               {"file", finding.file}};
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

std::string check_text(const SiteView& site, const Findings& findings) {
  if (findings.empty()) return clean_text(site);
  return findings_table(findings) + "\n" + advice_table(findings);
}

std::string check_json(const Findings& findings) {
  Json list = Json::array();
  for (const Finding& finding : findings) list.push_back(json_of(finding));
  return json_text({{"clean", findings.empty()}, {"findings", list}});
}

}  // namespace toplist::ctl
