#include "toplistctl/lib/site_view/prospect.h"

#include <array>

namespace toplist::ctl {
namespace {

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

}  // namespace

std::string_view Prospect::word() const { return name_of(kind).word; }

std::string Prospect::text() const {
  std::string text(name_of(kind).text);
  if (!reason.empty()) text += ": " + reason;
  return text;
}

}  // namespace toplist::ctl
