#include "toplistctl/commands/sample/partners.h"

#include <array>
#include <vector>

#include "toplistctl/lib/new_site/site_texts.h"
#include "util/fields.h"

namespace toplist::site {
namespace {

constexpr std::size_t kPartnerFields = 7;

Partner parse_partner(std::string_view line) {
  FieldReader fields(line);
  std::array<std::string_view, kPartnerFields> record;
  next_record(fields, record);
  const auto& [name, topic, group, language, since, title, description] = record;
  return {name, topic, group, language, since, title, description};
}

/// The lines of the table but for the first, which names the columns.
std::vector<Partner> parse_partners(std::string_view text) {
  std::vector<Partner> partners;
  FieldReader lines(text, kLineSeparator);
  lines.skip(1);
  for (std::string_view line; lines.next(line);) partners.push_back(parse_partner(line));
  return partners;
}

const std::vector<Partner>& partners() {
  static const std::vector<Partner> kPartners = parse_partners(embedded_text("partners.txt"));
  return kPartners;
}

}  // namespace

std::size_t partner_count() { return partners().size(); }

const Partner& partner_of(std::size_t index) { return partners()[index % partner_count()]; }

std::string partner_domain(std::size_t index) {
  std::string domain(partner_of(index).name);
  const std::size_t round = index / partner_count();
  if (round > 0) domain += "-" + std::to_string(round + 1);
  return domain + ".example";
}

std::string_view partner_picture(const Partner& partner) {
  return embedded_text("pictures/" + std::string(partner.name) + ".jpg");
}

}  // namespace toplist::site
