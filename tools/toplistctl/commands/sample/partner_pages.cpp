#include "toplistctl/commands/sample/partner_pages.h"

#include <string>

#include "toplistctl/commands/sample/partners.h"
#include "util/text.h"

namespace toplist::site {
namespace {

/// As the page names it; its host is the domain without the page's "www.".
constexpr const char* kPicturePath = "/pictures/2006-10417.jpg";
constexpr std::size_t kWithoutPicture = 7;

}  // namespace

void write_partner_pages(SiteFolder& folder, std::size_t trades) {
  for (std::size_t i = 0; i < trades; ++i) {
    const std::string domain = partner_domain(i);
    const bool has_picture = i % kWithoutPicture != kWithoutPicture - 1;
    std::string page(
        embedded_text(has_picture ? "partner/index.html" : "partner/without-picture.html"));
    replace_all(page, "{domain}", domain);
    folder.write("http:/www." + domain + "/index.html", page);
    if (has_picture) {
      folder.write("http:/" + domain + kPicturePath, partner_picture(partner_of(i)));
    }
  }
}

}  // namespace toplist::site
