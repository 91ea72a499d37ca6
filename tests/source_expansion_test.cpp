// The expansion of template sources. Its fuzz target compares it with the same done line by line.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

#include "support/text_cases.h"
#include "toplistctl/lib/templates/expansion.h"

namespace toplist::test {
namespace {

using namespace toplist::ctl;

using Sources = std::map<std::string, std::string>;  ///< texts by name

ReadSource reader(const Sources& sources) {
  return [&sources](const std::string& path) -> std::optional<std::string> {
    const auto entry = sources.find(path);
    return entry == sources.end() ? std::nullopt : std::optional(entry->second);
  };
}

// Each text but these two is a source file.
TEST(Expansion, FollowsItsDirectivesAndTellsWhereErrorsAre) {
  for (TextCase& c : read_text_cases("expansion_cases.txt")) {
    SCOPED_TRACE(c.name);
    const Expansion expansion = expand_source("s", reader(c.texts));
    std::string errors;
    for (const auto& [place, message] : expansion.errors) {
      errors += place.file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) +
                " " + message + "\n";
    }
    EXPECT_EQ(errors, c.texts["errors"]);
    if (errors.empty()) {
      EXPECT_EQ(expansion.text, c.texts["expansion"]);
    }
  }
}

std::string only_error(const std::string& path, const ReadSource& read) {
  const Expansion expansion = expand_source(path, read);
  return expansion.errors.size() == 1 ? expansion.errors[0].message : "not one error";
}

TEST(Expansion, WhatHasNoEndIsAnError) {
  Sources doubling;
  for (int i = 0; i < 40; ++i) {
    const std::string include = "<!-- include " + std::to_string(i + 1) + " -->\n";
    doubling[std::to_string(i)] = include + include;
  }
  doubling["40"] = "";
  EXPECT_TRUE(only_error("0", reader(doubling)).starts_with("includes without end: 0 -> 1 -> "));
  const auto deeper = [](const std::string&) { return "<!-- include x/y -->\n"; };
  EXPECT_TRUE(only_error("s", deeper).starts_with("includes without end: s -> x/y -> x/x/y -> "));
  const std::string large(1UL << 20, 'x');
  const Sources repeated{{"s", "<!-- repeat 0-999 -->\n" + large + "\n<!-- end repeat -->\n"}};
  EXPECT_EQ(only_error("s", reader(repeated)), "from here on the expansion is too large");
}

TEST(Expansion, PlacesLeadBackThroughIncludesAndRepeats) {
  const Sources sources{{"s", "<!-- repeat 8-9 -->\nx\n<!-- include b -->\n<!-- end repeat -->\n."},
                        {"b", "{place} a\n{place}{place} b"}};
  const Expansion expansion = expand_source("s", reader(sources));
  ASSERT_EQ(expansion.text, "x\n9 a\n99 bx\n10 a\n1010 b.");
  const std::pair<SourcePlace, SourcePlace> places[] = {
      {{"", 1, 1}, {"s", 2, 1}},  {{"", 2, 1}, {"b", 1, 1}},  {{"", 2, 3}, {"b", 1, 9}},
      {{"", 3, 4}, {"b", 2, 16}}, {{"", 3, 5}, {"s", 2, 1}},  {{"", 4, 4}, {"b", 1, 9}},
      {{"", 5, 3}, {"b", 2, 8}},  {{"", 5, 6}, {"b", 2, 16}}, {{"", 5, 7}, {"s", 5, 1}},
  };
  for (const auto& [at, from] : places) {
    EXPECT_EQ(expansion.place_of(at.line, at.column), from) << at.line << ":" << at.column;
  }
}

}  // namespace
}  // namespace toplist::test
