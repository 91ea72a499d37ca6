#include "support/site.h"

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <regex>

#include "support/text_cases.h"
#include "util/sha1.h"
#include "util/shell.h"

namespace toplist::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLogPath = "l/sys/sys.log";

std::string read_file(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Trade default_trade(std::int32_t i) {
  const std::string number = (i < 9 ? "0" : "") + std::to_string(i + 1);
  Trade trade{.id = 101 + i, .domain = "t" + number + ".example"};
  trade.periods[kPeriod60].rin = 120 - 10 * i;
  trade.periods[kPeriod60].uin = 10 + 10 * i;
  // Powers of two, so that percentages are exact: clk/rin rises and ctt/out falls, both by 25.
  trade.periods[kPeriod24].rin = trade.periods[kPeriod24].out = 64;
  trade.periods[kPeriod24].clk = 16 * i;
  trade.periods[kPeriod24].ctt = 16 * (11 - i);
  trade.periods[kPeriod99].rin = 1000 + i;
  trade.columns = {"Title " + number, "About " + number, number + ".jpg", "Category " + number};
  return trade;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const RunResult& result) {
  return stream << "status " << result.status << ", signal " << result.signal << "\nstdout: \""
                << result.out << "\"\nstderr: \"" << result.err << '"';
}

Site::Site() : Site(default_trades()) {}

Site::Site(const std::vector<Trade>& trades) {
  for (const char* name : {"d/t", "d/h", "d/tl", "d/gr", "l/sys", "l/thumbs"}) make_dir(name);
  for (const char* name : {"d/t/index", "d/t/sum", "d/tl/tl", "d/tl/tl.ext"}) write(name, "");
  write("d/tl/vantaig", ctl::encode_harvest_file({}));
  std::string columns;
  ctl::append_column_header(
      columns, std::array<std::string_view, 4>{"title", "description", "picture", "category"});
  write("d/tl/tl.a1", columns);
  for (const Trade& trade : trades) add_trade(trade);
}

std::vector<Trade> Site::default_trades() {
  constexpr std::int32_t kCount = 12;
  std::vector<Trade> trades;
  trades.reserve(kCount);
  for (std::int32_t i = 0; i < kCount; ++i) trades.push_back(default_trade(i));
  return trades;
}

void Site::add_trade(const Trade& trade) const {
  std::string index, sum, history, columns;
  ctl::append_trade(
      index, ctl::make_trade(trade.id, trade.domain, "http://" + trade.domain + "/", trade.status));
  ctl::append_sum(sum, {trade.id, {trade.periods[0], trade.periods[1], trade.periods[2]}});
  ctl::append_history(history, 1, trade.periods[kPeriod99]);
  const std::vector<std::string_view> values(trade.columns.begin(), trade.columns.end());
  ctl::append_columns(columns, trade.domain, values);
  append("d/t/index", index);
  append("d/t/sum", sum);
  append("d/tl/tl.a1", columns);
  write("d/h/" + trade.domain + ".his", history);
}

void Site::add_toplist(const std::string& name, std::string_view text,
                       std::string_view order_by) const {
  const std::string template_path = "d/tl/" + name + ".tpl";
  write(template_path, text);
  add_definition({.template_name = name + ".tpl",
                  .output_path = name + ".html",
                  .order_by = std::string(order_by),
                  .check = sha1_file_hex(path(template_path))});
}

void Site::add_definition(const ctl::Definition& definition) const {
  std::string record;
  ctl::append_definition(record, definition);
  append("d/tl/tl", record);
}

void Site::add_setting(const std::string& name, std::string_view setting) const {
  std::string record;
  ctl::append_setting(record, name + ".tpl", setting);
  append("d/tl/tl.ext", record);
}

void Site::write(const std::string& name, std::string_view bytes) const {
  std::ofstream(path(name), std::ios::binary) << bytes;
}

void Site::append(const std::string& name, std::string_view bytes) const {
  std::ofstream(path(name), std::ios::binary | std::ios::app) << bytes;
}

void Site::remove(const std::string& name) const { fs::remove_all(path(name)); }

void Site::make_dir(const std::string& name) const { fs::create_directories(path(name)); }

void Site::replace_by_dir(const std::string& name) const {
  remove(name);
  make_dir(name);
}

void Site::add_stand_in(const std::string& script, const std::string& tool) const {
  fs::copy_file(TOPLIST_TEST_DATA "/stand-ins/" + script, path("bin/" + tool));
}

RunResult Site::start(const Start& how) const {
  const TempDir output;
  // No core file: an abnormal stop is expected at times.
  std::string command = "cd " + shell_word(dir_.path()) + " && ulimit -c 0";
  if (!how.limit.empty()) command += " && ulimit " + how.limit;
  command += " && exec env -i";
  for (const std::string& variable : how.environment) command += " " + shell_word(variable);
  command += " " + shell_word(how.program);
  for (const std::string& argument : how.arguments) command += " " + shell_word(argument);
  command += " </dev/null >" + shell_word(output.path() + "/out");
  command += " 2>" + shell_word(output.path() + "/err");
  for (const int fd : how.closed) command += " " + std::to_string(fd) + ">&-";

  const int ended = std::system(command.c_str());
  RunResult result{.out = output.read("out"), .err = output.read("err")};
  if (WIFEXITED(ended)) result.status = WEXITSTATUS(ended);
  if (WIFSIGNALED(ended)) result.signal = WTERMSIG(ended);
  return result;
}

std::string Site::read(const std::string& name) const { return read_file(path(name)); }

std::string Site::log() const {
  // A line whose time has another shape stays as it is, and then differs from what is expected.
  return std::regex_replace(read(kLogPath), std::regex("(^|\n)\\|[0-9]{12}\\|"), "$1|<time>|");
}

std::map<std::string, std::string> Site::contents() const {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(dir_.path())) {
    files[entry.path().lexically_relative(dir_.path())] =
        entry.is_directory() ? "(directory)" : read_file(entry.path());
  }
  files.erase(kLogPath);
  return files;
}

void expect_sessions(const std::string& file, const std::string& name) {
  const std::string path =
      "PATH=" + fs::path(TOPLIST_PROGRAM).parent_path().string() + ":/usr/bin:/bin";
  std::string prelude = "exec 2>&1\n";
  int count = 0;
  for (TextCase& c : read_text_cases(file)) {
    if (c.name == "prelude") prelude += c.texts["session"];
    if (c.name == "prelude" || (!name.empty() && c.name != name)) continue;
    const Site site;
    const RunResult result = site.start({.program = "/bin/sh",
                                         .arguments = {"-c", prelude + c.texts["session"]},
                                         .environment = {path, "LC_ALL=C.UTF-8"}});
    EXPECT_EQ(result.out, c.texts["output"]) << c.name;
    ++count;
  }
  EXPECT_GT(count, 0) << name;
}

}  // namespace toplist::test
