#include "sample/partner_pages.h"

#include <string>
#include <string_view>

#include "sample/catalogue.h"
#include "sample/picture.h"
#include "sample/random.h"
#include "sample/scene.h"
#include "sample/site_folder.h"
#include "util/text.h"

namespace toplist::site {
namespace {

constexpr std::string_view kPicturePath = "/pictures/2006-10417.jpg";
constexpr std::size_t kWithoutPicture = 7;

/// The logo and the foreign picture are what a harvest passes over.
constexpr std::string_view kPage = R"(<!doctype html>
<html><head><title>{domain}</title></head>
<body>
<a href="/"><img src="/pictures/logo-20061.png" alt="home"></a>
<a href="http://elsewhere.example/"><img src="/pictures/90210-99.jpg" alt="another site's"></a>
{picture}
<p>This is {domain}.</p>
</body></html>
)";

std::string page_of(const std::string& domain, bool with_picture) {
  std::string page(kPage);
  replace_all(page, "{picture}",
              with_picture ? "<a href=\"/gallery/\"><img src=\"" + std::string(kPicturePath) +
                                 "\" alt=\"our latest\"></a>"
                           : "<p>No pictures yet.</p>");
  replace_all(page, "{domain}", domain);
  return page;
}

}  // namespace

std::filesystem::path write_partner_pages(const std::filesystem::path& directory,
                                          const SampleOptions& options) {
  SiteFolder folder(directory);
  Random random(options.seed);
  for (std::size_t i = 0; i < options.trades; ++i) {
    const std::string domain = catalogue_domain(i);
    const bool with_picture = i % kWithoutPicture != kWithoutPicture - 1;
    folder.make_folder("http:/www." + domain);
    folder.write("http:/www." + domain + "/index.html", page_of(domain, with_picture));
    if (!with_picture) continue;
    folder.make_folder("http:/" + domain + "/pictures");
    folder.write("http:/" + domain + std::string(kPicturePath),
                 encode_picture(make_scene(catalogue_entry(i).theme, random)));
  }
  return folder.failed();
}

}  // namespace toplist::site
