#pragma once

#include <cstdint>

#include "support/random.h"
#include "support/site.h"

namespace toplist::test {

/// A site of a few trades and toplists in which most things are right and anything may be broken:
/// ties, trades that are off or share a number or domain, settings and groups, pages that cannot be
/// written or are the file of something else, templates with faults, missing files, figures at
/// their limits or beyond, bytes that are no characters. The same seed gives the same site. Each
/// line of a template "t<i>.tpl" that begins with "rank " names one rank: "rank <rank>:
/// %%tid_<rank>%% ...".
class RandomSite : public Site {
 public:
  explicit RandomSite(std::uint64_t seed);

 protected:
  std::string template_text();

 private:
  bool one_in(std::uint64_t count) { return random_.below(count) == 0; }
  std::int32_t number(std::uint64_t below) {
    return static_cast<std::int32_t>(random_.below(below));
  }
  template <std::size_t N>
  std::string one_of(const char* const (&texts)[N]) {
    return texts[random_.below(N)];
  }

  std::int32_t figure();
  std::string odd_figures();
  void add_trades();
  void add_random_toplist(int i);
  std::string page_path(int i);
  std::string setting();
  void break_something();

  Random random_;
};

}  // namespace toplist::test
