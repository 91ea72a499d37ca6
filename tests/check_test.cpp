// What toplistctl finds out about a site, and that a run agrees.

#include "toplistctl/commands/check/check.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <tuple>
#include <utility>

#include "support/site.h"
#include "toplistctl/commands/check/selection.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/diagnostics/report.h"
#include "toplistctl/lib/formats/log_lines.h"
#include "toplistctl/lib/site_files/new_file.h"
#include "toplistctl/lib/templates/digest.h"
#include "util/sha1.h"

namespace toplist::test {
namespace {

using namespace toplist::ctl;

constexpr std::size_t kRecordBytes = 996;

Diagnostics findings_in(const Site& site) {
  const InSite in_site(site);
  // The programs' folder is in the site, for tests to put them there.
  return select(check_site(SiteView(), "bin"), {.min_effect = Effect::note}).findings;
}

/// One finding per line: kind, file, place.
std::string summary(const Diagnostics& findings) {
  std::string text;
  for (const Diagnostic& finding : findings) {
    EXPECT_EQ(std::count(kinds::all().begin(), kinds::all().end(), finding.kind), 1);
    text += std::string(finding.kind->name) + " " + finding.place.file;
    const std::string place = finding.place.position();
    text += (place.empty() ? "" : ", " + place) + "\n";
  }
  return text;
}

/// What a run does with the page "top.html".
enum class Run {
  builds,   ///< without a word
  logs,     ///< and logs something
  leaves,   ///< does not build it, without a word
  ends,     ///< does not build it and logs why
  aborts,   ///< ends abnormally
  not_run,  ///< not tried, as it would use the network
};

Run run_of(const Site& site) {
  if (site.start({}).signal == SIGABRT) return Run::aborts;
  const bool logged = !site.log().empty();
  if (site.read("top.html").empty()) return logged ? Run::ends : Run::leaves;
  return logged ? Run::logs : Run::builds;
}

/// A site whose check is clean; it has one toplist, which all trades with any rin60 pass.
struct CleanSite : Site {
  CleanSite() {
    add_toplist("top", "%%tid_000%%: %%att00_011%%\n");
    add_setting("top", "rin60=1");
  }

  void append(const std::string& name, const std::string& text) const {
    write(name, read(name) + text);
  }

  void replace(const std::string& name, const std::string& from, const std::string& to) const {
    std::string text = read(name);
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from << " in " << name;
    write(name, text.replace(at, from.size(), to));
  }

  void configure(const ctl::HarvestFile& values) const {
    write("d/tl/vantaig", ctl::encode_harvest_file(values));
  }

  /// Switches a harvest on that has all it needs but its programs.
  void harvest_with(const std::string& image_tool, const std::string& method) const {
    configure({.image_tool = image_tool, .fetch_method = method, .harvest = "1"});
    make_dir("l/sys/net");
  }

  void add_program(const std::string& name) const {
    make_dir("bin");
    write("bin/" + name, "");
    std::filesystem::permissions(path("bin/" + name), std::filesystem::perms::owner_all);
  }

  /// Gives the last trade, the only one that a harvest visits, another text.
  void set_text(std::size_t offset, const std::string& text) const {
    std::string index = read("d/t/index");
    index.replace(11 * kRecordBytes + offset, text.size() + 1, text.c_str(), text.size() + 1);
    write("d/t/index", index);
  }
  void move_page(const std::string& url) const { set_text(offsetof(TradeRecord, url), url); }

  /// Switches a harvest on that has its programs, too, and visits one page.
  void harvest_of(const std::string& url, const std::string& tool,
                  const std::string& method) const {
    harvest_with(tool, method);
    for (const std::string& program : {tool, std::string("fetch")}) add_program(program);
    move_page(url);
  }

  /// Adds the toplist "x" with this template, order-by value, mode and page.
  void define(const std::string& order_by, const std::string& mode, const std::string& page) const {
    write("d/tl/x.tpl", "x\n");
    add_definition({"x.tpl", page, order_by, mode, sha1_file_hex(path("d/tl/x.tpl"))});
  }
};

using S = const CleanSite&;

struct Fault {
  const char* found;  ///< as in summary(), without the last line's end
  Run run;
  void (*plant)(S site);
};

// The toplist "top" stands in front of what the faults of other toplists stop.
const Fault kFaults[] = {
    {"", Run::builds, [](S) {}},

    // --- files and folders ---
    {"missing-file d/tl/vantaig", Run::ends, [](S s) { s.remove("d/tl/vantaig"); }},
    {"missing-file d/tl/tl.a1", Run::ends, [](S s) { s.remove("d/tl/tl.a1"); }},
    {"missing-file d/t/sum", Run::ends, [](S s) { s.remove("d/t/sum"); }},
    {"missing-file d/tl/tl", Run::ends, [](S s) { s.remove("d/tl/tl"); }},
    {"missing-file d/tl/tl.ext", Run::ends, [](S s) { s.remove("d/tl/tl.ext"); }},
    {"missing-file d/t/index", Run::ends, [](S s) { s.remove("d/t/index"); }},
    {"no-site .", Run::ends, [](S s) { s.remove("d"); }},
    {"log-folder l/sys", Run::builds, [](S s) { s.remove("l/sys"); }},
    {"log-file l/sys/sys.log", Run::builds,
     [](S s) { std::filesystem::create_symlink("none/log", s.path("l/sys/sys.log")); }},
    {"unused-template d/tl/y.tpl\nunused-history d/h/gone.his\nunused-thumbnail l/thumbs/gone.jpg",
     Run::builds,
     [](S s) {
       s.add_trade({.id = 99, .domain = "off.example", .status = 0});
       s.write("d/tl/x.tpl.src", "<!-- include part.tpl -->\n");
       for (const char* name : {"d/tl/y.tpl", "d/tl/part.tpl", "d/tl/y.html", "d/h/gone.his",
                                "l/thumbs/off.example.jpg", "l/thumbs/gone.jpg"}) {
         s.write(name, "");
       }
     }},

    // --- the trade database ---
    {"too-few-records d/t/index", Run::ends,
     [](S s) { s.write("d/t/index", s.read("d/t/index").substr(0, 9 * kRecordBytes)); }},
    {"cut-record d/t/index, record 13", Run::builds, [](S s) { s.append("d/t/index", "x"); }},
    {"no-active-trades d/t/index", Run::leaves,
     [](S s) {
       std::string index = s.read("d/t/index");
       for (std::size_t at = 824; at < index.size(); at += kRecordBytes) index[at] = 2;
       s.write("d/t/index", index);
     }},
    {"duplicate-id d/t/index, record 13", Run::builds,
     [](S s) { s.add_trade({.id = 101, .domain = "new.example"}); }},
    {"duplicate-domain d/t/index, record 13", Run::builds,
     [](S s) { s.add_trade({.id = 99, .domain = "t01.example"}); }},
    {"duplicate-columns d/tl/tl.a1, line 14", Run::builds,
     [](S s) { s.add_trade({.id = 99, .domain = "t01.example", .status = 0}); }},
    {"bad-domain d/t/index, record 13", Run::builds,
     [](S s) { s.add_trade({.id = 99, .domain = ""}); }},
    {"markup-in-value d/t/index, record 12", Run::builds,
     [](S s) { s.move_page("http://t12.example/?<script>"); }},

    // --- figures and columns ---
    {"unknown-sum-id d/t/sum, record 1\nno-sum-record d/t/sum", Run::builds,
     [](S s) { s.replace("d/t/sum", "|101|", "|0101|"); }},
    {"sum-fields d/t/sum, line 3", Run::builds,
     [](S s) { s.replace("d/t/sum", "|103|", "|103|0|"); }},
    {"sum-fields d/t/sum, line 13", Run::builds, [](S s) { s.append("d/t/sum", "sum|113|"); }},
    {"no-figures d/t/sum", Run::builds, [](S s) { s.write("d/t/sum", ""); }},
    {"missing-history d/h/t02.example.his", Run::logs,
     [](S s) { s.remove("d/h/t02.example.his"); }},
    {"no-histories d/h", Run::logs, [](S s) { s.remove("d/h"); }},
    {"history-fields d/h/t02.example.his, line 1", Run::builds,
     [](S s) {
       const std::string ten = "1|2|3|4|5|6|7|8|9|10|\n";
       s.write("d/h/t02.example.his", ten + ten + ten);  // thirty fields, but not one record
     }},
    {"short-header d/tl/tl.a1, line 1", Run::builds,
     [](S s) { s.write("d/tl/tl.a1", "x|domain|\nx|t01.example|\n"); }},
    {"column-fields d/tl/tl.a1, line 3", Run::builds,
     [](S s) { s.replace("d/tl/tl.a1", "Title 02|", "Title|02|"); }},
    {"no-columns d/tl/tl.a1", Run::builds,
     [](S s) { s.replace("d/tl/tl.a1", "t02.example", "t2.example"); }},
    {"mark-in-value d/tl/tl.a1, line 3\nmarkup-in-value d/tl/tl.a1, line 3", Run::builds,
     [](S s) { s.replace("d/tl/tl.a1", "Title 02", "100%%</b>"); }},
    {"", Run::builds, [](S s) { s.replace("d/tl/tl.a1", "Title 02", "<3 a < b<"); }},

    // --- configuration and thumbnails ---
    {"short-configuration d/tl/vantaig, line 3", Run::builds,
     [](S s) {
       s.write("l/thumbs/t01.example.jpg", "");
       s.write("d/tl/vantaig", "l/thumbs/\n\n\n");
     }},
    {"no-thumbnails l/thumbs/", Run::builds, [](S s) { s.configure({.thumbnail_optional = "0"}); }},
    {"carriage-return d/tl/vantaig, line 6", Run::builds,
     [](S s) { s.configure({.thumbnail_optional = "1\r"}); }},
    {"thumbnail-folder l/none/", Run::leaves,
     [](S s) { s.configure({.thumb_dir = "l/none/", .thumbnail_optional = "0"}); }},
    {"harvest-folder l/none\nthumbnail-slash d/tl/vantaig, line 1\n"
     "harvest-folder l/sys/net/\nmissing-tool d/tl/vantaig, line 5",
     Run::not_run,
     [](S s) { s.configure({.thumb_dir = "l/none", .fetch_method = "3", .harvest = "24"}); }},
    {"long-configuration d/tl/vantaig, line 8\nunknown-fetch-method d/tl/vantaig, line 5",
     Run::not_run,
     [](S s) {
       s.configure({.fetch_method = "4", .harvest = "1"});
       s.append("d/tl/vantaig", "more\n");
     }},
    {"missing-tool d/tl/vantaig, line 2\nmissing-tool d/tl/vantaig, line 5", Run::not_run,
     [](S s) { s.harvest_with("convert -quiet", "1"); }},
    {"", Run::not_run,
     [](S s) {
       s.harvest_with(s.path("bin/convert") + ";x", "1");
       s.add_program("convert");
       s.add_program("wget");
     }},
    {"", Run::not_run, [](S s) { s.harvest_with("A=1 convert", "0"); }},
    {"", Run::not_run, [](S s) { s.harvest_with("ulimit -v 1; convert", "0"); }},
    {"needs-downloader d/t/index, record 12", Run::not_run,
     [](S s) { s.harvest_of("https://t12.example/", ":", "0"); }},
    {"needs-downloader d/t/index, record 12", Run::not_run,
     [](S s) { s.harvest_of("http://x.example:81/", "toplist-thumbnail", "0"); }},
    {"other-host d/t/index, record 12", Run::not_run,
     [](S s) { s.harvest_of("https://www.t02.example/", "tool", "2"); }},

    // --- definitions ---
    {"definition-fields d/tl/tl, line 2", Run::leaves,
     [](S s) { s.append("d/tl/tl", "list|x.tpl|"); }},
    {"no-toplists d/tl/tl", Run::leaves, [](S s) { s.write("d/tl/tl", ""); }},
    {"build-mode d/tl/tl, record 2", Run::builds, [](S s) { s.define("1", "3", "x.html"); }},
    {"check-value d/tl/tl, record 1", Run::leaves,
     [](S s) { s.append("d/tl/top.tpl", "changed\n"); }},
    {"missing-template d/tl/tl, record 1", Run::ends,
     [](S s) {
       s.write("d/tl/tl", "");
       s.add_definition({"top.tpl", "top.html", "1", "2", ""});
       s.remove("d/tl/top.tpl");
     }},
    {"order-by d/tl/tl, record 2", Run::builds, [](S s) { s.define("05", "1", "x.html"); }},
    {"output d/tl/tl, record 2", Run::logs, [](S s) { s.define("1", "1", "none/x.html"); }},
    {"duplicate-output d/tl/tl, record 2", Run::builds,
     [](S s) { s.define("1", "1", "l/../top.html"); }},
    {"overwritten-file d/tl/tl, record 2\noverwritten-file d/tl/tl, record 5\n"
     "overwritten-file d/tl/tl, record 4\noverwritten-file d/tl/tl, record 3",
     Run::logs,  // into the page
     [](S s) {
       std::filesystem::create_symlink("../d/t/sum", s.path("l/sum"));
       std::filesystem::create_hard_link(s.path("d/h/t01.example.his"), s.path("l/history"));
       for (const char* page : {"l/sum", "l/history", "d/tl/x.tpl", "l/sys/sys.log"}) {
         s.define("1", "1", page);
       }
     }},
    {"build-mode d/tl/tl, record 2\nold-page top.html", Run::builds,
     [](S s) {
       s.define("1", "3", "x.html");
       for (const char* page : {"top.html", "x.html"}) {
         s.write(page, "");
         const std::filesystem::path path = s.path(page);
         std::filesystem::last_write_time(path, last_write_time(path) - std::chrono::hours(25));
       }
     }},
    {"empty-toplist d/tl/tl, record 1", Run::builds,
     [](S s) { s.add_setting("top", "rin60=9999"); }},

    // --- sources ---
    {"source-differs d/tl/top.inc, line 1, column 12", Run::builds,
     [](S s) {
       s.write("d/tl/top.tpl.src", "<!-- include top.inc -->\n");
       s.write("d/tl/top.inc", "%%tid_000%%, %%att00_011%%\n");
     }},
    {"source-differs d/tl/top.tpl.src, line 2, column 1", Run::builds,
     [](S s) { s.write("d/tl/top.tpl.src", "x\n<!-- include none -->\n"); }},
    {"", Run::builds,
     [](S s) {
       s.write("d/tl/top.tpl.src", s.read("d/tl/top.tpl"));
       s.write("d/tl/tl.src", "not of the definitions");
       s.write("d/tl/later.tpl.src", "not yet installed");
     }},

    // --- settings and groups ---
    {"setting-fields d/tl/tl.ext, line 1", Run::builds,
     [](S s) { s.write("d/tl/tl.ext", "set|top.tpl|"); }},
    {"no-equals d/tl/tl.ext, record 2", Run::builds, [](S s) { s.add_setting("top", "rin60"); }},
    {"unknown-template d/tl/tl.ext, record 2", Run::builds,
     [](S s) { s.add_setting("other", "rin60=-1"); }},
    {"unknown-key d/tl/tl.ext, record 2", Run::builds,
     [](S s) { s.add_setting("top", "rin99=1"); }},
    {"bad-number d/tl/tl.ext, record 2", Run::builds,
     [](S s) { s.add_setting("top", "rin60=1,000"); }},
    {"empty-list d/tl/tl.ext, record 2", Run::builds,
     [](S s) { s.add_setting("top", "skipdomains=ab,cd"); }},
    {"missing-group d/gr/none", Run::logs, [](S s) { s.add_setting("top", "group=none"); }},
    {"empty-group d/gr/g", Run::builds,
     [](S s) {
       s.add_setting("top", "group= g");
       s.write("d/gr/g", ctl::encode_group("g", {}));
     }},
    {"group-fields d/gr/g, line 2\n", Run::builds,
     [](S s) {
       s.add_setting("top", "group=g");
       s.write("d/gr/g", ctl::encode_group("g", {}) + "member|101|\n");
     }},
};

TEST(Check, FindsEachFaultAndARunAgrees) {
  for (const Fault& fault : kFaults) {
    SCOPED_TRACE(fault.found);
    const CleanSite site;
    fault.plant(site);
    const auto before = site.contents();
    std::string expected = fault.found;
    if (!expected.empty() && !expected.ends_with('\n')) expected += '\n';
    EXPECT_EQ(summary(findings_in(site)), expected);
    EXPECT_EQ(site.contents(), before);
    EXPECT_EQ(site.log(), "");
    if (fault.run != Run::not_run) {
      EXPECT_EQ(static_cast<int>(run_of(site)), static_cast<int>(fault.run));
    }
  }
}

TEST(Check, TellsHostNamesFromOtherDomains) {
  const CleanSite site;
  const InSite in_site(site);
  for (const char* domain : {"A-1.b_c.example", "localhost", "-a.example", "a..example",
                             "a.example.", "a b.example", "a\nb", "a\tb", "a|b", "a/b"}) {
    site.set_text(offsetof(TradeRecord, domain), domain);
    Diagnostics findings;
    check_trades(SiteView(), findings);
    const bool is_host_name = *domain == 'A' || *domain == 'l';
    EXPECT_EQ(summary(findings), is_host_name ? "" : "bad-domain d/t/index, record 12\n") << domain;
  }
}

struct Choice {
  Wanted wanted;
  const char* told;
  std::size_t hidden;
};

TEST(Check, TellsWhatIsWantedAndCausesAlone) {
  const Diagnostics all = {{&kinds::kDefinitionFields, {.file = "a"}, ""},
                           {&kinds::kMissingGroup, {.file = "b"}, ""},
                           {&kinds::kNoToplists, {.file = "c"}, ""},
                           {&kinds::kUnknownTemplate, {.file = "d"}, ""},
                           {&kinds::kUnusedHistory, {.file = "e"}, ""}};
  const Choice choices[] = {
      {{}, "definition-fields a\nmissing-group b\n", 1},
      {{Effect::note}, "definition-fields a\nmissing-group b\nunused-history e\n", 0},
      {{Effect::stop}, "definition-fields a\n", 2},  // as grave as what it brings
      {{Effect::log, {&kinds::kDefinitionFields, &kinds::kMissingGroup}}, "no-toplists c\n", 1},
  };
  for (const auto& [wanted, told, hidden] : choices) {
    const Selection selection = select(all, wanted);
    EXPECT_EQ(summary(selection.findings), told);
    EXPECT_EQ(selection.hidden, hidden) << told;
  }
}

struct TemplateFault {
  const char* text;
  const char* found;
  bool aborts = false;
};

const TemplateFault kTemplateFaults[] = {
    {"%%tid_000%% %%dom_001%%\r\n<tlxt>%%</tlxt>\n", ""},
    {"a\n%%tid_000%% is 50%%\n", "stray-mark d/tl/top.tpl, line 2, column 18", true},
    {"a\n%%tid_1%% of them all\n%%tid_000%% 9%%\n",
     "malformed-tag d/tl/top.tpl, line 2, column 1\nstray-mark d/tl/top.tpl, line 3, column 14"},
    {"%%tid_000%% %%TID_000%% %%rin_000%%\n%%TID_001%%\n",
     "unknown-name d/tl/top.tpl, line 1, column 13\nunknown-name d/tl/top.tpl, line 1, column 25"},
    {"%%tid_000%%%%dom_000%%\n",
     "unknown-name d/tl/top.tpl, line 1, column 1\n"
     "odd-rank d/tl/top.tpl, line 1, column 1"},
    {"%%tid_011%% %%tid_012%% %%tid_999%%\n", "rank-beyond-list d/tl/top.tpl, line 1, column 13"},
    {"%%tid_0 1%%\n", "odd-rank d/tl/top.tpl, line 1, column 1"},
    {"%%att_000%%xx%%attic_000%%\n",
     "odd-column d/tl/top.tpl, line 1, column 1\n"
     "odd-column d/tl/top.tpl, line 1, column 14"},
    {"%%att00_000%% %%att01_000%%\n", "missing-column d/tl/top.tpl, line 1, column 15"},
    {"a\n<tlxt>\n<tlxt>\nb\n", "open-block d/tl/top.tpl, line 2"},
};

TEST(Check, FindsFaultsOfTemplatesWhereTheyAre) {
  for (const TemplateFault& fault : kTemplateFaults) {
    SCOPED_TRACE(fault.text);
    const Site site;
    site.add_toplist("top", fault.text);
    const std::string found = summary(findings_in(site));
    EXPECT_EQ(found, *fault.found == '\0' ? "" : fault.found + std::string("\n"));
    EXPECT_EQ(site.run().signal, fault.aborts ? SIGABRT : 0);
  }
}

TEST(Check, FindsAValueThatStopsTheRun) {
  const Site site;
  site.add_trade({.id = 99, .domain = "new.example", .columns = {"100%%", "", "", ""}});
  site.add_setting("top", "domains=new.example");
  site.add_toplist("top", "<b>%%tit_000%%\n");
  EXPECT_EQ(summary(findings_in(site)),
            "mark-in-value d/tl/tl.a1, line 14\nstray-mark d/tl/top.tpl, line 1, column 4\n");
  EXPECT_EQ(site.run().signal, SIGABRT);
}

TEST(Check, FindsWhereTheTagsOfATemplateAreTooMany) {
  std::string text;
  for (int line = 0; line < 25000; ++line) text += "%%tid_000%% %%tid_001%%\n";
  const Site site;
  site.add_toplist("top", text);
  EXPECT_EQ(summary(findings_in(site)), "");
  site.write("d/tl/tl", "");
  site.add_toplist("top", text + "%%tid_000%% %%tid_001%%\n");
  EXPECT_EQ(summary(findings_in(site)), "too-many-tags d/tl/top.tpl, line 25001, column 13\n");
  EXPECT_EQ(site.run(), RunResult{});
  EXPECT_TRUE(site.read("top.html").ends_with("101 102\n101 %%tid_001%%\n"));
}

TEST(Check, TellsWhosePictureTheImageToolWouldWorkOn) {
  const CleanSite site;
  for (const auto& [url, owner] : {std::pair{"http://t02.example/", "the picture of record 2"},
                                   {"http://x.example/", "which is no trade's"}}) {
    site.harvest_of(url, "tool", "0");
    const Diagnostics findings = findings_in(site);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_TRUE(findings[0].message.ends_with(owner)) << findings[0].message;
  }
}

TEST(Diagnostics, AreWrittenForPeopleEditorsAndPrograms) {
  const Kind kind{"some-kind", Effect::log, "Do this."};
  const Diagnostics both = {{&kind, {.file = "d/a\x1b", .line = 3, .column = 14}, "bad \xff"},
                            {&kind, {.file = "d/b"}, "worse"}};
  EXPECT_EQ(diagnostics_table(both, Repeats::few),
            "FILE  PLACE              KIND       EFFECT           MESSAGE\n"
            "d/a?  line 3, column 14  some-kind  adds a log line  bad \xff\n"
            "d/b                      some-kind  adds a log line  worse\n"
            "\n"
            "KIND       ADVICE\n"
            "some-kind  Do this.\n");
  for (const auto& [repeats, count, rows] :
       {std::tuple{Repeats::few, 7, 6}, {Repeats::few, 6, 6}, {Repeats::all, 7, 7}}) {
    const std::string text =
        diagnostics_table(Diagnostics(static_cast<std::size_t>(count), both[0]), repeats);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), rows + 4) << count;
    EXPECT_EQ(text.find("and 2 more; --all") != std::string::npos, rows < count) << count;
  }
  EXPECT_EQ(diagnostics_lines(both, 1), "d/a\x1b:3:14: bad \xff\nand 1 more\n");
  EXPECT_EQ(advice_lines(both), "some-kind: Do this.\n");
  EXPECT_EQ(json_text(diagnostics_value({both[0]})),
            "[\n  {\n    \"kind\": \"some-kind\",\n    \"effect\": \"log\",\n"
            "    \"file\": \"d/a\\u001b\",\n    \"line\": 3,\n    \"column\": 14,\n"
            "    \"message\": \"bad \xEF\xBF\xBD\",\n    \"advice\": \"Do this.\"\n"
            "  }\n]\n");
}

TEST(Digest, OnlyTheCheckValuesOfTheTemplateChange) {
  const std::string text = "x|a|x|o|1|1|old|x|x|\r\ny|b|y|o|1|1|old|y|y|\n|a||o|1|2||z";
  EXPECT_EQ(with_check_value(text, "a", "new"),
            "x|a|x|o|1|1|new|x|x|\r\ny|b|y|o|1|1|old|y|y|\n|a||o|1|2|new|z");
  EXPECT_EQ(with_check_value(text, "c", "new"), std::nullopt);
  EXPECT_EQ(with_check_value("x|a|x|o|1|1|", "a", "new"), std::nullopt);
}

TEST(Digest, AFileIsReplacedUnderItsNameModeAndLink) {
  const Site site;
  site.write("d/real", "old");
  ASSERT_EQ(::chmod(site.path("d/real").c_str(), 0640), 0);
  std::filesystem::create_symlink("../real", site.path("d/tl/link"));
  const auto before = site.contents();
  ASSERT_TRUE(replace_file(site.path("d/tl/link"), "new and longer"));
  EXPECT_EQ(site.read("d/real"), "new and longer");
  EXPECT_TRUE(std::filesystem::is_symlink(site.path("d/tl/link")));
  struct stat status {};
  ASSERT_EQ(::stat(site.path("d/real").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640U);
  EXPECT_EQ(site.contents().size(), before.size());  // no temporary file is left
}

TEST(Digest, ANewFileComesWholeAndWithTheUsersMode) {
  const Site site;
  const mode_t mask = ::umask(027);
  EXPECT_TRUE(replace_file(site.path("d/new"), "x"));
  ::umask(mask);
  struct stat status {};
  ASSERT_EQ(::stat(site.path("d/new").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640U);

  const auto before = site.contents();
  std::filesystem::create_symlink("none", site.path("d/link"));
  for (const char* path : {"d/link", "d/none/x", "d/tl"}) {
    EXPECT_FALSE(replace_file(site.path(path), "x")) << path;
  }
  std::filesystem::remove(site.path("d/link"));
  EXPECT_EQ(site.contents(), before);
}

}  // namespace
}  // namespace toplist::test
