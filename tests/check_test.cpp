// What toplistctl finds out about a site, and that a run agrees.

#include "toplistctl/commands/check/check.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/site.h"
#include "support/text_cases.h"
#include "toplistctl/commands/check/selection.h"
#include "toplistctl/lib/diagnostics/kinds.h"
#include "toplistctl/lib/diagnostics/report.h"
#include "toplistctl/lib/formats/log_lines.h"
#include "toplistctl/lib/site_files/new_file.h"
#include "toplistctl/lib/templates/check_values.h"
#include "util/fields.h"
#include "util/sha1.h"
#include "util/text.h"

namespace toplist::test {
namespace {

using namespace toplist::ctl;

constexpr std::size_t kRecordBytes = sizeof(TradeRecord);

/// A site without findings. Its toplist "top" shows all trades that have any rin60.
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

  void set_line(std::size_t number, const std::string& value) const {
    std::vector<std::string> lines = parse_harvest_config(read("d/tl/vantaig"), "0").lines;
    lines[number - 1] = value;
    write("d/tl/vantaig", "");
    for (const std::string& line : lines) append("d/tl/vantaig", line + "\n");
  }

  /// Sets a text of the last trade, the only one that a harvest visits.
  void set_text(std::size_t offset, const std::string& text) const {
    std::string index = read("d/t/index");
    index.replace(11 * kRecordBytes + offset, text.size() + 1, text.c_str(), text.size() + 1);
    write("d/t/index", index);
  }

  void age(const std::string& name, int seconds) const {
    const std::filesystem::path file = path(name);
    std::filesystem::last_write_time(file, last_write_time(file) - std::chrono::seconds(seconds));
  }

  /// Moves the first two counters of each record of "d/t/sum" or of all histories one to the right.
  void shift(const std::string& name) const {
    const Site other;
    const bool is_sum = name == "d/t/sum";
    for (std::size_t i = 0; i < 12; ++i) {
      const Trade trade = default_trades()[i];
      const std::string number =
          std::to_string(is_sum ? trade.periods[kPeriod60].rin : trade.periods[kPeriod99].rin);
      const std::string id = std::to_string(trade.id);
      if (is_sum) {
        const std::string uin = std::to_string(trade.periods[kPeriod60].uin);
        replace(name, "|" + id + "|" + number + "|" + uin + "|", "|" + id + "|0|" + number + "|");
      } else {
        replace("d/h/" + trade.domain + ".his", number + "|0|", "0|" + number + "|");
      }
    }
  }
};

/// What a line of "edit" does to the site; WORDS are separated by blanks, TEXT is the rest of the
/// line, in which "\n" is a line feed.
struct Edit {
  const char* name;
  int words;  ///< before the text
  void (*apply)(const CleanSite& site, const std::string& a, const std::string& b,
                const std::string& text);
};
using S = const CleanSite&;
using T = const std::string&;
namespace fs = std::filesystem;

const Edit kEdits[] = {
    {"write", 1, [](S s, T file, T, T text) { s.write(file, text); }},
    {"append", 1, [](S s, T file, T, T text) { s.append(file, text); }},
    {"mark", 1, [](S s, T file, T, T) { s.write(file, "\xEF\xBB\xBF" + s.read(file)); }},
    {"cut", 2, [](S s, T file, T size, T) { fs::resize_file(s.path(file), std::stoul(size)); }},
    {"duplicate", 1, [](S s, T file, T, T) { s.append(file, s.read(file)); }},
    {"fill", 2,
     [](S s, T file, T count, T text) {
       std::string all;
       for (int i = std::stoi(count); i > 0; --i) all += text;
       s.write(file, all);
     }},
    {"replace", 1,  // FROM => TO
     [](S s, T file, T, T text) {
       const std::size_t blank = text.rfind(" => ");
       s.replace(file, text.substr(0, blank), text.substr(blank + 4));
     }},
    {"remove", 1, [](S s, T file, T, T) { s.remove(file); }},
    {"move", 2, [](S s, T file, T to, T) { fs::rename(s.path(file), s.path(to)); }},
    {"copy", 2, [](S s, T file, T to, T) { s.write(to, s.read(file)); }},
    {"folder", 1, [](S s, T folder, T, T) { s.make_dir(folder); }},
    {"fifo", 1, [](S s, T fifo, T, T) { EXPECT_EQ(::mkfifo(s.path(fifo).c_str(), 0600), 0); }},
    {"link", 2, [](S s, T link, T target, T) { fs::create_symlink(target, s.path(link)); }},
    {"hardlink", 2,
     [](S s, T link, T target, T) { fs::create_hard_link(s.path(target), s.path(link)); }},
    {"age", 2, [](S s, T file, T seconds, T) { s.age(file, std::stoi(seconds)); }},
    {"trade", 2,
     [](S s, T id, T domain, T status) {
       s.add_trade({.id = std::stoi(id), .domain = domain, .status = std::stoi(status)});
     }},
    {"inactive", 0,
     [](S s, T, T, T) {
       std::string index = s.read("d/t/index");
       for (std::size_t at = offsetof(TradeRecord, status); at < index.size(); at += kRecordBytes) {
         index[at] = 2;
       }
       s.write("d/t/index", index);
     }},
    {"url", 1, [](S s, T url, T, T) { s.set_text(offsetof(TradeRecord, url), url); }},
    {"shift", 1, [](S s, T file, T, T) { s.shift(file); }},
    {"line", 1, [](S s, T number, T, T text) { s.set_line(std::stoul(number), text); }},
    {"pictures", 1,
     [](S s, T count, T, T) {
       for (std::size_t i = 0; i < std::stoul(count); ++i) {
         s.write("l/thumbs/" + Site::default_trades()[i].domain + ".jpg", "");
       }
     }},
    {"harvest", 0,
     [](S s, T, T, T tool) {
       s.set_line(HarvestConfig::kImageTool, tool);
       s.set_line(HarvestConfig::kHarvest, "1");
       s.make_dir("l/sys/net");
     }},
    {"program", 1,
     [](S s, T name, T, T) {
       s.make_dir("bin");
       s.write("bin/" + name, "");
       fs::permissions(s.path("bin/" + name), fs::perms::owner_all);
     }},
    {"define", 2,  // order-by value and mode of the toplist "x", then its page
     [](S s, T order_by, T mode, T page) {
       s.write("d/tl/x.tpl", "x\n");
       s.add_definition({"x.tpl", page, order_by, mode, sha1_file_hex(s.path("d/tl/x.tpl"))});
     }},
    {"setting", 1, [](S s, T toplist, T, T setting) { s.add_setting(toplist, setting); }},
    {"template", 0,
     [](S s, T, T, T text) {
       s.write("d/tl/top.tpl", text);
       s.write("d/tl/tl", "|top.tpl||top.html|1|2||||");
     }},
};

void apply_edit(const CleanSite& site, std::string line) {
  const auto next_word = [&line] {
    const std::string word = line.substr(0, line.find(' '));
    line.erase(0, word.size() + 1);
    return word;
  };
  const std::string name = next_word();
  const Edit* const edit = std::find_if(std::begin(kEdits), std::end(kEdits),
                                        [&name](const Edit& known) { return known.name == name; });
  ASSERT_NE(edit, std::end(kEdits)) << name;
  std::array<std::string, 2> words;
  for (int i = 0; i < edit->words; ++i) words.at(static_cast<std::size_t>(i)) = next_word();
  replace_all(line, "\\n", "\n");
  edit->apply(site, words[0], words[1], line);
}

std::vector<std::string> lines_of(std::string_view text) {
  std::vector<std::string> lines;
  FieldReader reader(text, kLineSeparator);
  for (std::string_view line; reader.next(line);) lines.emplace_back(line);
  return lines;
}

/// One finding per line: kind, file, place.
std::string summary(const Diagnostics& findings) {
  std::string text;
  for (const Diagnostic& finding : findings) {
    EXPECT_EQ(std::count(kinds::all().begin(), kinds::all().end(), finding.kind), 1);
    const std::string place = finding.place.position();
    text += std::string(finding.kind->name) + " " + finding.place.file +
            (place.empty() ? "" : ", " + place) + "\n";
  }
  return text;
}

/// What a run does with the page "top.html": "builds" it or "leaves" it, both without a word,
/// "logs" something and builds it, "ends" and logs why, or "aborts".
std::string run_of(const Site& site) {
  site.remove("top.html");
  if (site.start({}).signal == SIGABRT) return "aborts";
  const bool logged = !site.log().empty();
  if (site.read("top.html").empty()) return logged ? "ends" : "leaves";
  return logged ? "logs" : "builds";
}

TEST(Check, FindsEachFaultAndARunAgrees) {
  for (TextCase& broken : read_text_cases("broken_sites.txt")) {
    SCOPED_TRACE(broken.name);
    const CleanSite site;
    for (const std::string& line : lines_of(broken.texts["edit"])) apply_edit(site, line);
    const std::string run = broken.texts["run"].empty() ? "builds\n" : broken.texts["run"];
    const bool is_run = run != "not run\n";  // it would use the network, or read without end
    const auto before = is_run ? site.contents() : std::map<std::string, std::string>();
    const InSite in_site(site);
    // The programs' folder is in the site, for tests to put them there.
    const Diagnostics findings =
        select(check_site(SiteView(), "bin"), {.min_effect = Effect::note}).findings;
    EXPECT_EQ(summary(findings), broken.texts["finds"]);
    for (const std::string& said : lines_of(broken.texts["says"])) {
      if (findings.empty()) break;
      const std::string text = findings[0].message + "\n" + std::string(findings[0].kind->advice);
      EXPECT_NE(text.find(said), std::string::npos) << said << " in: " << text;
    }
    if (!is_run) continue;
    EXPECT_EQ(site.contents(), before);
    EXPECT_EQ(run_of(site) + "\n", run);
  }
}

TEST(Check, TellsHostNamesFromOtherDomains) {
  const CleanSite site;
  const InSite in_site(site);
  for (const char* domain : {"A-1.b_c.example", "localhost", "", "-a.example", "a..example",
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
  const char* found;
  std::size_t hidden;
};

TEST(Check, ReportsWhatIsWantedAndCausesAlone) {
  const Diagnostics all = {{&kinds::kUnusedHistory, {.file = "e"}, ""},
                           {&kinds::kMissingGroup, {.file = "b"}, ""},
                           {&kinds::kDefinitionFields, {.file = "a"}, ""},
                           {&kinds::kNoToplists, {.file = "c"}, ""},
                           {&kinds::kUnknownTemplate, {.file = "d"}, ""}};
  const Choice choices[] = {
      {{}, "definition-fields a\nmissing-group b\n", 1},
      {{Effect::note}, "definition-fields a\nmissing-group b\nunused-history e\n", 0},
      {{Effect::stop}, "definition-fields a\n", 2},  // as serious as what it causes
      {{Effect::log, {&kinds::kDefinitionFields, &kinds::kMissingGroup}}, "no-toplists c\n", 1},
  };
  for (const auto& [wanted, found, hidden] : choices) {
    const Selection selection = select(all, wanted);
    EXPECT_EQ(summary(selection.findings), found);
    EXPECT_EQ(selection.hidden, hidden) << found;
  }
}

/// As root, the program becomes the owner of the site's folder, who may do less than root.
TEST(Check, ActsAsTheSitesOwnerAndNamesOtherOwners) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root";
  constexpr uid_t kNobody = 65534;
  const CleanSite site;
  ASSERT_EQ(::chown(site.path("").c_str(), kNobody, kNobody), 0);
  for (const auto& entry : fs::recursive_directory_iterator(site.path(""))) {
    ASSERT_EQ(::chown(entry.path().c_str(), kNobody, kNobody), 0);
  }
  const Start check{.program = TOPLISTCTL_PROGRAM,
                    .arguments = {"check", "--site", site.path("")},
                    .environment = {"TZ=UTC"}};
  RunResult result = site.start(check);
  EXPECT_EQ(result.status, 0) << result;
  EXPECT_NE(result.err.find(", the owner of " + site.path("")), std::string::npos) << result;

  site.write("l/sys/toplist.lock", "");
  site.write("l/sys/sys.log", "");
  for (const char* name : {"l/sys/toplist.lock", "l/sys/sys.log"}) {
    fs::permissions(site.path(name), fs::perms::owner_read);
  }
  site.make_dir("pages");
  site.write("d/tl/x.tpl", "x\n");
  site.add_definition({"x.tpl", "pages/x.html", "1", "2", ""});
  result = site.start(check);
  EXPECT_EQ(result.status, 1);
  for (const char* found : {"lock-file", "log-file", "output-owner", "pages belongs to root"}) {
    EXPECT_NE(result.out.find(found), std::string::npos) << found << " in " << result;
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
