#include "toplistctl/check/finding.h"

#include <array>

namespace toplist::ctl {
namespace {

struct EffectName {
  std::string_view word;
  std::string_view text;
};

/// In the order of Effect.
constexpr std::array<EffectName, 5> kEffects{{
    {"stop", "stops the run"},
    {"skip", "skips the toplist"},
    {"log", "logs it, goes on"},
    {"show", "shows it wrong"},
    {"lose", "loses something"},
}};

const EffectName& name_of(Effect effect) { return kEffects.at(static_cast<std::size_t>(effect)); }

}  // namespace

std::string_view effect_word(Effect effect) { return name_of(effect).word; }

std::string_view effect_text(Effect effect) { return name_of(effect).text; }

std::string Place::text() const {
  std::string text;
  const auto add = [&text](const char* unit, std::size_t number) {
    if (number == 0) return;
    if (!text.empty()) text += ", ";
    text += unit + std::to_string(number);
  };
  add("record ", record);
  add("line ", line);
  add("column ", column);
  return text;
}

std::string in_quotes(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string count_of(std::size_t count, const char* unit) {
  return std::to_string(count) + " " + unit + (count == 1 ? "" : "s");
}

}  // namespace toplist::ctl
