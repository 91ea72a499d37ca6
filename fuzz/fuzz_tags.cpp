// The expansion of tags, passes counted, against the same steps carried out one by one in place.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "input.h"
#include "render/render.h"
#include "support/slow_expansion.h"

namespace {

using toplist::TradeRow;
using toplist::fuzz::Input;
using toplist::fuzz::require;

/// One row with six extra columns, which may hold tags, and one without any.
std::vector<TradeRow> some_rows(Input& input) {
  std::vector<TradeRow> rows(2);
  rows[0].id = "42";
  rows[0].domain = input.text(input.integer<std::uint8_t>() % 16);
  rows[0].url = "http://a.example/";
  rows[0].periods[toplist::kPeriod60].rin = input.integer<std::int32_t>();
  for (int i = 0; i < 6; ++i) {
    rows[0].extra_columns.push_back(input.text(input.integer<std::uint8_t>() % 32));
  }
  return rows;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  Input input(bytes, size);
  const std::vector<TradeRow> rows = some_rows(input);
  const std::vector<const TradeRow*> ranked{&rows[0], &rows[1]};
  // Near the limit: a value that brings itself in again would take the slow way too long.
  const std::int64_t before = toplist::kPassLimit - input.integer<std::uint8_t>();
  const std::string line(input.text(4096));

  std::int64_t passes = before;
  std::string page = line;
  const bool complete = toplist::expand_tags(page, ranked, passes);
  std::int64_t slow_passes = before;
  try {
    const std::string expected = toplist::test::slow_expansion(line, ranked, slow_passes);
    require(complete, "a stop that the steps do not make");
    require(page == expected, "another page than step by step");
    require(passes == slow_passes, "another count of passes than step by step");
  } catch (const std::out_of_range&) {
    require(!complete, "no stop where the steps make one");
  }
  try {
    toplist::render_template("", line, ranked);
  } catch (const toplist::StrayMark&) {
  }
  return 0;
}
