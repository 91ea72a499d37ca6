// Whole runs against reading the same files with cat, and the digest against sha1sum: processes,
// measured alternately.
//
// usage: bench_runs PROGRAM ROUNDS SITE...     (sites in ascending order of their trades)

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "run/statistics.h"
#include "run/trade_record.h"
#include "table.h"
#include "toplist/definitions.h"
#include "util/file.h"
#include "util/sha1.h"

namespace {

namespace fs = std::filesystem;
using toplist::bench::median;
using toplist::bench::milliseconds;
using toplist::bench::print_ratio;

constexpr double kDigestMebibytes = 256;
constexpr double kBaseKibibytes = 16 * 1024;

/// What one process took.
struct Usage {
  double wall;       ///< seconds
  double processor;  ///< seconds
  double kibibytes;  ///< at its peak
};

double seconds_of(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// Runs a command in `folder`, its output thrown away.
Usage run(const std::vector<std::string>& command, const fs::path& folder) {
  std::vector<char*> words;
  words.reserve(command.size() + 1);
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);

  const auto start = std::chrono::steady_clock::now();
  const pid_t child = ::fork();
  if (child == 0) {
    const int null = ::open("/dev/null", O_RDWR);
    ::dup2(null, STDOUT_FILENO);
    if (::chdir(folder.c_str()) == 0) ::execvp(words[0], words.data());
    ::_exit(127);
  }
  int status = 0;
  rusage usage{};
  if (::wait4(child, &status, 0, &usage) != child || status != 0) {
    throw std::runtime_error("failed: " + command[0]);
  }
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  return {wall.count(), seconds_of(usage.ru_utime) + seconds_of(usage.ru_stime),
          static_cast<double>(usage.ru_maxrss)};
}

/// The medians of several runs.
struct Usages {
  std::vector<double> wall, processor, kibibytes;

  void add(const Usage& usage) {
    wall.push_back(usage.wall);
    processor.push_back(usage.processor);
    kibibytes.push_back(usage.kibibytes);
  }
};

/// The files that a run reads, each once, separated by NULs as "xargs -0" takes them.
std::string input_files(const fs::path& site) {
  std::string list;
  const auto add = [&list](const std::string& path) { list += path + '\0'; };
  for (const char* path :
       {"d/t/index", "d/tl/vantaig", "d/tl/tl.a1", "d/t/sum", "d/tl/tl", "d/tl/tl.ext"}) {
    add(path);
  }
  std::vector<toplist::TradeRecord> trades;
  toplist::load_trades(site / "d/t/index", trades);
  for (const auto& row : toplist::build_rows(trades)) add("d/h/" + row.domain + ".his");
  toplist::FileBuffer definitions;
  definitions.read(site / "d/tl/tl");
  for (const auto& definition : toplist::parse_definitions(definitions.text())) {
    add(definition.template_path);
  }
  return list;
}

std::size_t trade_count(const fs::path& site) {
  return fs::file_size(site / "d/t/index") / sizeof(toplist::TradeRecord);
}

/// Returns the median wall time of a run.
double compare_site(const std::string& program, int rounds, const fs::path& site) {
  const fs::path list = fs::absolute(site) += ".files";
  toplist::write_file(list, input_files(site));
  const std::vector<std::string> cat{"xargs", "-0", "-a", list, "cat"};
  const std::vector<std::string> toplist_run{program, "run"};
  run(cat, site);  // fills the page cache for both
  Usages cats, runs;
  for (int i = 0; i < rounds; ++i) {
    cats.add(run(cat, site));
    runs.add(run(toplist_run, site));
  }
  const std::size_t trades = trade_count(site);
  const std::string what = std::to_string(trades) + " trades";
  const double wall = median(runs.wall);
  print_ratio(what + ", wall time / cat", milliseconds(wall), milliseconds(median(cats.wall)),
              wall / median(cats.wall), trades <= 10000 ? 1.5 : 0);
  print_ratio(what + ", processor time / cat", milliseconds(median(runs.processor)),
              milliseconds(median(cats.processor)), median(runs.processor) / median(cats.processor),
              0);
  const double peak = median(runs.kibibytes);
  print_ratio(what + ", KiB a trade beyond 16 MiB", std::to_string(static_cast<int>(peak)) + " KiB",
              "", std::max(0.0, peak - kBaseKibibytes) / static_cast<double>(trades), 3);
  return wall;
}

void compare_digests(int rounds, const fs::path& folder) {
  const fs::path file = folder / "digest-input";
  std::string block(1024UL * 1024, '\0');
  for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<char>(i * 31 / 7);
  const toplist::UniqueFd fd(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  for (int i = 0; i < static_cast<int>(kDigestMebibytes); ++i)
    toplist::write_fully(fd.get(), block);

  std::vector<double> ours, theirs;
  for (int i = 0; i < rounds; ++i) {
    theirs.push_back(run({"sha1sum", file}, folder).wall);
    const auto start = std::chrono::steady_clock::now();
    toplist::sha1_file_hex(file);
    ours.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  fs::remove(file);
  print_ratio("digest of 256 MiB / sha1sum", milliseconds(median(ours)),
              milliseconds(median(theirs)), median(ours) / median(theirs), 1);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  const std::string program = fs::absolute(argv[1]);
  const int rounds = std::atoi(argv[2]);
  toplist::bench::print_head("whole runs");
  std::vector<double> walls;
  for (int i = 3; i < argc; ++i) walls.push_back(compare_site(program, rounds, argv[i]));
  if (walls.size() > 1) {
    const double last = walls.back(), before = walls[walls.size() - 2];
    print_ratio("the largest site / the one before it", milliseconds(last), milliseconds(before),
                last / before, 20);
  }
  compare_digests(rounds, fs::path(argv[3]).parent_path());
  return 0;
}
