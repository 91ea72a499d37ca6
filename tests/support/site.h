#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "run/trade_row.h"
#include "support/temp_dir.h"
#include "toplistctl/lib/formats/site_writer.h"

namespace toplist::test {

/// One trade in every file that knows it. Its url is "http://", the domain and "/".
struct Trade {
  std::int32_t id = 0;
  std::string domain;
  std::array<PeriodBlock, kPeriodCount> periods{};  ///< the 99 block goes to the history file
  std::array<std::string, 4> columns{};             ///< title, description, picture, category
  std::int32_t status = 1;
};

/// How the program is started. Its environment is empty but for what is given here.
struct Start {
  std::string program = TOPLIST_PROGRAM;
  std::vector<std::string> arguments = {"run"};
  std::vector<int> closed = {};  ///< standard descriptors that the program finds closed
  std::vector<std::string> environment = {};  ///< e.g. "TZ=XXX-14"
  std::string limit = {};                     ///< what the shell's ulimit sets, e.g. "-Sn 16"
};

/// How the program ended. The initial values are those of every run without an abnormal stop.
struct RunResult {
  int status = 0;
  int signal = 0;  ///< the signal that ended it
  std::string out = {};
  std::string err = {};

  bool operator==(const RunResult&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const RunResult& result);

/// A site in a temporary directory, in which the built program is run. It starts with the folders,
/// a configuration that neither harvests nor requires thumbnails, and no toplist. Paths are
/// relative to the site's root.
class Site {
 public:
  Site();  ///< with the default_trades()
  explicit Site(const std::vector<Trade>& trades);
  struct Bare {};
  explicit Site(Bare) {}  ///< an empty directory

  /// Twelve trades of ids 101 to 112 and domains "t01.example" to "t12.example", whose figures set
  /// them apart: by rin60 they rank in this order, by uin60 in the reverse one.
  static std::vector<Trade> default_trades();

  void add_trade(const Trade& trade) const;
  /// Adds the template "d/tl/<name>.tpl" and its definition: output "<name>.html", right check
  /// value, mode "1".
  void add_toplist(const std::string& name, std::string_view text,
                   std::string_view order_by = "1") const;
  void add_definition(const ctl::Definition& definition) const;
  /// A setting of the toplist `name` as add_toplist() calls it.
  void add_setting(const std::string& name, std::string_view setting) const;

  [[nodiscard]] std::string path(const std::string& name) const { return dir_.path() + "/" + name; }
  void write(const std::string& name, std::string_view bytes) const;
  void remove(const std::string& name) const;
  void make_dir(const std::string& name) const;
  void replace_by_dir(const std::string& name) const;
  /// Puts a script of tests/data/stand-ins into the folder "bin", which must be there.
  void add_stand_in(const std::string& script, const std::string& tool) const;

  [[nodiscard]] RunResult start(const Start& how) const;
  [[nodiscard]] RunResult run() const { return start({}); }

  /// The contents of a file; empty when there is none.
  [[nodiscard]] std::string read(const std::string& name) const;
  /// The system log with "<time>" in place of each line's 12 digits.
  [[nodiscard]] std::string log() const;
  /// All that the site holds, by path, but the system log. Directories hold "(directory)".
  [[nodiscard]] std::map<std::string, std::string> contents() const;

 private:
  void append(const std::string& name, std::string_view bytes) const;

  TempDir dir_;
};

/// Works in the site's root as long as it lives.
class InSite {
 public:
  explicit InSite(const Site& site) : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(site.path(""));
  }
  ~InSite() { std::filesystem::current_path(before_); }
  InSite(const InSite&) = delete;
  InSite& operator=(const InSite&) = delete;

 private:
  std::filesystem::path before_;
};

/// Runs the session `name` of a file in tests/data, or with "" all, each in a shell in a new site
/// of default_trades() without toplists, after the file's "prelude". Compares what it prints, on
/// standard error too, with the file. The built programs are in the path.
void expect_sessions(const std::string& file, const std::string& name = "");

}  // namespace toplist::test
