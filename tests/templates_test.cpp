// The expansion of template sources, whose fuzz target compares it with the same done line by line;
// the walk through a template's tags; and the commands that install templates.

#include <fmt/core.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <utility>

#include "support/render_fixture.h"
#include "support/site.h"
#include "support/text_cases.h"
#include "toplistctl/lib/templates/source.h"
#include "toplistctl/lib/templates/template_walk.h"

namespace toplist::test {
namespace {

namespace fs = std::filesystem;
using namespace toplist::ctl;

using Sources = std::map<std::string, std::string>;  ///< texts by name

Expansion expand(const std::string& path, const Sources& sources) {
  return expand_source(path, [&sources](const std::string& name) -> Expected<std::string> {
    const auto entry = sources.find(name);
    if (entry == sources.end()) return failure("cannot open " + name);
    return entry->second;
  });
}

// Each text but these two is a source file.
TEST(Expansion, FollowsItsDirectivesAndTellsWhereErrorsAre) {
  for (TextCase& c : read_text_cases("expansion_cases.txt")) {
    SCOPED_TRACE(c.name);
    const Expansion expansion = expand("s", c.texts);
    std::string errors;
    for (const auto& [kind, at, message, brings] : expansion.errors) {
      errors += fmt::format("{}:{}:{} {}\n", at.file, at.line, at.column, message);
    }
    EXPECT_EQ(errors, c.texts["errors"]);
    if (errors.empty()) {
      EXPECT_EQ(expansion.text, c.texts["expansion"]);
    }
  }
}

TEST(Expansion, WhatHasNoEndIsAnError) {
  Sources sources;
  for (int i = 0; i < 40; ++i) {
    const std::string include = fmt::format("<!-- include {} -->\n", i + 1);
    sources[std::to_string(i)] = include + include;
  }
  sources["40"] = "";
  sources["s"] = "<!-- include x/y -->\n";
  for (std::string path = "x/y"; path.size() < 200; path = "x/" + path) {
    sources[path] = sources["s"];
  }
  sources["large"] =
      "<!-- repeat 0-999 -->\n" + std::string(1UL << 20, 'x') + "\n<!-- end repeat -->\n";
  for (const auto& [path, message] : {std::pair{"0", "includes without an end: 0 -> 1 -> "},
                                      {"s", "includes without an end: s -> x/y -> x/x/y -> "},
                                      {"large", "the template becomes too large here"}}) {
    const Expansion expansion = expand(path, sources);
    ASSERT_EQ(expansion.errors.size(), 1U) << path;
    EXPECT_TRUE(expansion.errors[0].message.starts_with(message)) << expansion.errors[0].message;
  }
}

TEST(Expansion, PlacesLeadBackThroughIncludesAndRepeats) {
  const Expansion expansion =
      expand("s", {{"s", "<!-- repeat 8-9 -->\nx\n<!-- include b -->\n<!-- end repeat -->\n."},
                   {"b", "{place} a\n{place}{place} b"}});
  ASSERT_EQ(expansion.text, "x\n9 a\n99 bx\n10 a\n1010 b.");
  const std::pair<Place, const char*> places[] = {
      {{"", 0, 1, 1}, "s:2:1: "},  {{"", 0, 2, 1}, "b:1:1: "},  {{"", 0, 2, 3}, "b:1:9: "},
      {{"", 0, 3, 2}, "b:2:8: "},  {{"", 0, 3, 4}, "b:2:16: "}, {{"", 0, 3, 5}, "s:2:1: "},
      {{"", 0, 4, 2}, "b:1:1: "},  {{"", 0, 4, 4}, "b:1:9: "},  {{"", 0, 5, 4}, "b:2:8: "},
      {{"", 0, 5, 6}, "b:2:16: "}, {{"", 0, 5, 7}, "s:5:1: "},
  };
  for (const auto& [at, from] : places) {
    EXPECT_EQ(expansion.place_of(at.line, at.column).prefix(), from) << at.position();
  }
}

TEST_F(Render, TheWalkTellsWhereInTheTemplateAMarkStops) {
  const std::pair<std::string, std::size_t> cases[] = {
      {"50%%", 3},
      {"%%tid_000%", 1},
      {"A%%tid_000%%B50%%", 16},
      {std::string(13, '%'), 12},
      {"%%tid_009%%%%dom_000%%", 21},  // " dom_000%%": a missing rank swallows 13 characters
      {"%%tid_000% %%tid_000%%", 21},
      {"%%att_001%%%%dom_001%%.", 21},
      {"<%%tit_000%%%des_000%%>", 21},
      {"%%img_002%%......", 1},  // the value brings it in: the column is its tag's
  };
  for (const auto& [line, column] : cases) {
    std::string strays;
    walk_template("a\n" + line + "\nb", ranked_, {.stray = [&strays](const StraySpot& stray) {
                    strays += fmt::format("{}:{} ", stray.line, stray.column);
                  }});
    EXPECT_EQ(strays, fmt::format("2:{} ", column)) << line;
  }
}

constexpr uid_t kOtherUser = 65534;

/// A site with the template "d/tl/top.tpl" and its source, and a file outside of it.
struct SiteWithSource : Site {
  SiteWithSource() {
    add_toplist("top", "old\n");
    write("d/tl/top.tpl.src", "new\n");
    (void)outside.write("secret", "the secret");
    ::chmod(secret().c_str(), 0600);
  }

  /// Gives the site to another user, who may not read the file outside. Only root can.
  void give_away() const {
    for (const auto& entry : fs::recursive_directory_iterator(path(""))) {
      ASSERT_EQ(::lchown(entry.path().c_str(), kOtherUser, kOtherUser), 0);
    }
    ASSERT_EQ(::chown(path("").c_str(), kOtherUser, kOtherUser), 0);
  }
  void link(const std::string& name, const std::string& target) const {
    fs::remove(path(name));
    fs::create_symlink(target, path(name));
  }
  /// The texts of the files below "d" that are no links.
  [[nodiscard]] Sources data() const {
    Sources texts;
    for (const auto& entry : fs::recursive_directory_iterator(path("d"))) {
      if (entry.is_symlink() || !entry.is_regular_file()) continue;
      const std::string name = entry.path().lexically_relative(path(""));
      texts[name] = read(name);
    }
    return texts;
  }
  [[nodiscard]] std::string secret() const { return outside.path() + "/secret"; }

  /// The exit status; what it prints goes to the file "out" outside.
  [[nodiscard]] int run_ctl(const std::string& arguments) const {
    const std::string command = fmt::format("cd {} && {} {} >{}/out 2>&1", path(""),
                                            TOPLISTCTL_PROGRAM, arguments, outside.path());
    return WEXITSTATUS(std::system(command.c_str()));
  }

  TempDir outside;
};

/// What somebody may plant in a site, and the command that must fail then and change nothing.
struct Planted {
  const char* command;
  const char* error;
  void (*plant)(const SiteWithSource& site);
};

TEST(TemplateCommands, WhatASitesUserPlantsGainsNothingFromRoot) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root has anything to lose";
  constexpr const char* kDenied = "Permission denied";
  const Planted cases[] = {
      {"expand --install d/tl/top.tpl.src", kDenied,
       [](const SiteWithSource& s) { s.link("d/tl/top.tpl.src", s.secret()); }},
      {"expand --output d/tl/top.tpl d/tl/top.tpl.src", kDenied,
       [](const SiteWithSource& s) {
         s.write("d/tl/top.tpl.src", "<!-- include " + s.secret() + " -->\n");
       }},
      {"expand --install d/tl/top.tpl.src", kDenied,
       [](const SiteWithSource& s) { s.link("d/tl/top.tpl", s.secret()); }},
      {"digest top.tpl", kDenied,
       [](const SiteWithSource& s) { s.link("d/tl/top.tpl", s.secret()); }},
      {"digest --update top.tpl", kDenied,
       [](const SiteWithSource& s) { s.link("d/tl/tl", s.secret()); }},
      {"render top.tpl", kDenied,
       [](const SiteWithSource& s) { s.link("d/tl/top.tpl", s.secret()); }},
      {"render --all --into p", "cannot open",
       [](const SiteWithSource& s) {
         s.add_definition({"top.tpl", "sub/secret", "1", "2", ""});
         s.make_dir("p");
         s.link("p/sub", s.outside.path());
       }},
  };
  for (const Planted& c : cases) {
    const SiteWithSource site;
    c.plant(site);
    site.give_away();
    const Sources before = site.data();
    EXPECT_NE(site.run_ctl(c.command), 0) << c.command;
    const std::string out = site.outside.read("out");
    EXPECT_NE(out.find(c.error), std::string::npos) << c.command << ": " << out;
    EXPECT_EQ(site.data(), before) << c.command;
    EXPECT_EQ(site.outside.read("secret"), "the secret") << c.command;
  }
}

TEST(TemplateCommands, WhatRootInstallsBelongsToTheSitesOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  const SiteWithSource site;
  site.write("d/tl/more.tpl.src", "more\n");
  site.give_away();
  ASSERT_EQ(site.run_ctl("expand --install d/tl/more.tpl.src"), 0) << site.outside.read("out");
  struct stat file {};
  ASSERT_EQ(::stat(site.path("d/tl/more.tpl").c_str(), &file), 0);
  EXPECT_EQ(file.st_uid, kOtherUser);
}

}  // namespace
}  // namespace toplist::test
