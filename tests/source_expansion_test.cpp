// The expansion of template sources: its rules one by one, and against the same done slowly.

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/slow_source_expansion.h"
#include "toplistctl/templates/expansion.h"

namespace toplist::test {
namespace {

using namespace toplist::ctl;

ReadSource reader(const Sources& sources) {
  return [&sources](const std::string& path) -> std::optional<std::string> {
    const auto entry = sources.find(path);
    return entry == sources.end() ? std::nullopt : std::optional(entry->second);
  };
}

struct Case {
  const char* what;
  Sources sources;
  std::string text;
};

const Case kCases[] = {
    {"bytes stay",
     {{"s", "a\r\n%%tit_NNN%% {place}<!-- x -->\n\nno end"}},
     "a\r\n%%tit_NNN%% {place}<!-- x -->\n\nno end"},
    {"nothing", {{"s", ""}}, ""},
    {"a repeat",
     {{"s",
       "<ol>\n<!-- repeat 8-9 -->\n<li>{place}: %%tit_NNN%% %%rin24:NNN%%\n"
       "<!-- end repeat -->\n</ol>\n"}},
     "<ol>\n<li>9: %%tit_008%% %%rin24:008%%\n<li>10: %%tit_009%% %%rin24:009%%\n</ol>\n"},
    {"carriage returns and blanks",
     {{"s", "\t<!-- repeat  999-999\t-->  \r\n%%tid_NNN%%{place}\r\n <!-- end repeat -->\r\n"}},
     "%%tid_999%%1000\r\n"},
    {"what is no rank",
     {{"s",
       "<!-- repeat 1-1 -->\nNNN %%NNN_000%% %%tid_000%%a_NNN%%x%% %%tid_NN%%\n"
       "%%tid_NNN%%%%dom_NNN%% %%x_NNN%% {PLACE} %%tid_\nNNN%%\n<!-- end repeat -->"}},
     "NNN %%NNN_000%% %%tid_000%%a_NNN%%x%% %%tid_NN%%\n"
     "%%tid_001%%%%dom_001%% %%x_NNN%% {PLACE} %%tid_\nNNN%%\n"},
    {"includes, relative to where they are named",
     {{"s", "1\n<!-- include in/b -->\n4"},
      {"in/b", "2\n<!-- include ../c d -->"},
      {"in/../c d", "3\n"}},
     "1\n2\n3\n4"},
    {"an include without line end",
     {{"s", "<!-- repeat 0-1 -->\n<!-- include b -->\n<!-- end repeat -->\n.\n"},
      {"b", "%%tid_NNN%%,"}},
     "%%tid_000%%,%%tid_001%%,.\n"},
    {"the same file twice, and a repeat in it",
     {{"s", "<!-- include b -->\n<!-- include b -->\n"},
      {"b", "<!-- repeat 0-1 -->\n{place}\n<!-- end repeat -->\n"}},
     "1\n2\n1\n2\n"},
};

TEST(Expansion, FollowsItsDirectives) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    const Expansion expansion = expand_source("s", reader(c.sources));
    EXPECT_EQ(expansion.text, c.text);
    EXPECT_EQ(expansion.errors, std::vector<SourceError>());
  }
}

struct ErrorCase {
  Sources sources;
  std::string errors;  ///< a line for each: place and how the message begins
};

const ErrorCase kErrorCases[] = {
    {{}, "s:0:0 cannot be opened\n"},
    {{{"s", "a\n <!-- include none -->\n"}}, "s:2:2 cannot open none\n"},
    {{{"s", "<!-- include in/b -->\n"}, {"in/b", "<!-- include ../s -->\n"}, {"in/../s", ""}},
     "in/b:1:1 a circle: s -> in/b -> in/../s\n"},
    {{{"s", "<!-- include-->\n<!-- includes -->\n<!-- include x --> y\n<p><!-- repeat 0-9 -->\n"}},
     "s:1:1 no such directive\ns:2:1 no such directive\ns:3:1 a directive stands alone\n"
     "s:4:4 a directive stands alone\ns:4:4 the repeat has no end\n"},
    {{{"s",
       "<!-- repeat 5-2 -->\n<!-- end repeat -->\n<!-- repeat 0-1000 -->\n"
       "<!-- end repeat x -->\n<!-- end repeat -->\n"}},
     "s:1:1 no such directive\ns:3:1 no such directive\ns:4:1 no such directive\n"
     "s:5:1 no repeat has begun\n"},
    {{{"s", "<!-- repeat 0-1 -->\n<!-- include b -->\n<!-- end repeat -->\n<!-- include b -->\n"},
      {"b", "<!-- repeat 0-1 -->\n<!-- end repeat -->\n<!-- end repeat -->\n"}},
     "b:1:1 a repeat in a repeat that begins in s, line 1\n"
     "b:3:1 no repeat has begun in this file, but one that begins in s, line 1\n"
     "b:3:1 no repeat has begun\n"},
    {{{"s", "<!-- include b -->\n<!-- end repeat -->\n"}, {"b", "<!-- repeat 0-1 -->\n"}},
     "b:1:1 the repeat has no end\ns:2:1 no repeat has begun\n"},
};

TEST(Expansion, ErrorsHaveTheirPlace) {
  for (const ErrorCase& c : kErrorCases) {
    SCOPED_TRACE(c.errors);
    const Expansion expansion = expand_source("s", reader(c.sources));
    std::string errors = c.errors;
    for (const SourceError& error : expansion.errors) {
      const std::string text = error.place.file + ":" + std::to_string(error.place.line) + ":" +
                               std::to_string(error.place.column) + " " + error.message;
      const std::string line = errors.substr(0, errors.find('\n'));
      EXPECT_TRUE(!line.empty() && text.starts_with(line)) << text << "\nnot " << line;
      errors.erase(0, line.size() + 1);
    }
    EXPECT_EQ(errors, "");
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

/// Some parts of lines; in between, now and then, a repeat of such.
std::string random_source(std::mt19937& random, bool may_repeat) {
  const char* const parts[] = {"<!-- include b -->\n",
                               "<!-- include c -->\n",
                               "%%tit_NNN%%",
                               "%%rin60_NNN%%",
                               "%%tid_000%%",
                               "{place}",
                               "NNN%%",
                               "%",
                               "\n",
                               "\r\n",
                               "x",
                               "<!-- repeat 0-0 -->\n",
                               "<!-- end repeat -->",
                               "<!-- include"};
  std::string text;
  for (auto count = random() % 8; count > 0; --count) {
    // The last three are mostly mistakes.
    text += parts[random() % (random() % 16 == 0 ? std::size(parts) : std::size(parts) - 3)];
    if (!may_repeat || random() % 4 != 0) continue;
    text += "\n<!-- repeat 8-10 -->\n" + random_source(random, false) + "\n<!-- end repeat -->\n";
  }
  return text;
}

TEST(Expansion, RandomSourcesExpandAsStepByStep) {
  std::mt19937 random(1);
  for (int i = 0; i < 3000; ++i) {
    const Sources sources{{"a", random_source(random, true)},
                          {"b", random_source(random, i % 4 == 0)},
                          {"c", random_source(random, false)}};
    ASSERT_EQ(difference(sources), "") << sources.at("a") << "\n-- b --\n"
                                       << sources.at("b") << "\n-- c --\n"
                                       << sources.at("c");
  }
}

}  // namespace
}  // namespace toplist::test
