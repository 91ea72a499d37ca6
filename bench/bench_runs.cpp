// Whole runs against the floor, which reads the same files and writes the same pages, and against
// cat, which only reads; and the digest against sha1sum. All are processes, measured alternately.
//
// usage: bench_runs TOPLIST FLOOR ROUNDS SITE...     (sites in ascending order of their trades)

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "harvest/harvest_config.h"
#include "run/statistics.h"
#include "run/trade_record.h"
#include "table.h"
#include "toplist/definitions.h"
#include "util/fields.h"
#include "util/file.h"
#include "util/sha1.h"

namespace {

namespace fs = std::filesystem;
using toplist::bench::median;
using toplist::bench::Table;
using Command = std::vector<std::string>;

constexpr double kDigestMebibytes = 256;
constexpr double kBaseKibibytes = 16 * 1024;
constexpr double kFloorGoal = 2.2;

struct Programs {
  std::string toplist, floor;
};

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
Usage run(const Command& command, const fs::path& folder) {
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

/// The files of a run, as lists of paths with a NUL behind each, as "xargs -0" takes them. Each is
/// named once, also the templates, which a run reads twice: for the digest and for the page.
struct FileLists {
  std::string inputs, pages;
};
FileLists files_of(const fs::path& site) {
  FileLists lists;
  const auto add = [&list = lists.inputs](const std::string& path) { list += path + '\0'; };
  for (const char* path :
       {toplist::kTradesPath, toplist::kHarvestConfigPath, toplist::kExtraColumnsPath,
        toplist::kSumPath, toplist::kDefinitionsPath, toplist::kSettingsPath}) {
    add(path);
  }
  std::vector<toplist::TradeRecord> trades;
  toplist::load_trades(site / toplist::kTradesPath, trades);
  for (const auto& row : toplist::build_rows(trades)) add(toplist::history_path(row.domain));
  toplist::FileBuffer definitions;
  definitions.read(site / toplist::kDefinitionsPath);
  for (const auto& definition : toplist::parse_definitions(definitions.text())) {
    add(definition.template_path);
    lists.pages += definition.output_path + '\0';
  }
  return lists;
}

std::size_t trade_count(const fs::path& site) {
  return fs::file_size(site / "d/t/index") / sizeof(toplist::TradeRecord);
}

/// Bytes of the largest file in a list of paths, or of the list itself.
std::uintmax_t largest_file(const fs::path& site, const std::string& list) {
  std::uintmax_t largest = list.size();
  toplist::FieldReader paths(list, '\0');
  for (std::string_view path; paths.next(path);) {
    largest = std::max(largest, fs::file_size(site / path));
  }
  return largest;
}

/// What `times` runs of a site took, and of what it is measured against, in turns.
struct Comparison {
  Comparison(const Programs& programs, const fs::path& site, int times) {
    const FileLists files = files_of(site);
    const fs::path inputs = fs::absolute(site) += ".inputs", pages = fs::absolute(site) += ".pages";
    toplist::write_file(inputs, files.inputs);
    toplist::write_file(pages, files.pages);
    const Command toplist_run{programs.toplist, "run"};
    const Command cat{"xargs", "-0", "-a", inputs, "cat"};
    for (const Command& command : {cat, toplist_run}) run(command, site);  // fills the page cache
    const auto largest =
        std::max(largest_file(site, files.inputs), largest_file(site, files.pages));
    const Command floor{programs.floor, inputs, pages, std::to_string(largest)};
    for (int i = 0; i < times; ++i) {
      floors.add(run(floor, site));
      cats.add(run(cat, site));
      runs.add(run(toplist_run, site));
    }
  }

  Usages floors, cats, runs;
};

/// Small sites are measured more often: a run of theirs is short, and soon disturbed.
int times_for(std::size_t trades, int rounds) {
  if (trades <= 1000) return 9 * rounds;
  return trades <= 10000 ? 3 * rounds : rounds;
}

/// Returns the median wall time of a run.
double compare_site(const Programs& programs, int rounds, const fs::path& site, Table& table) {
  const std::size_t trades = trade_count(site);
  const Comparison times(programs, site, times_for(trades, rounds));
  const double wall = median(times.runs.wall);
  const std::string what = std::to_string(trades) + " trades, ";
  table.add_times(what + "wall time / floor", wall, median(times.floors.wall), kFloorGoal);
  table.add_times(what + "processor time / floor", median(times.runs.processor),
                  median(times.floors.processor), 0);
  table.add_times(what + "wall time / cat", wall, median(times.cats.wall),
                  trades <= 10000 ? 1.5 : 0);
  const double peak = median(times.runs.kibibytes);
  table.add(what + "KiB a trade beyond 16 MiB", std::to_string(static_cast<int>(peak)) + " KiB", "",
            std::max(0.0, peak - kBaseKibibytes) / static_cast<double>(trades), 3);
  return wall;
}

void compare_digests(int rounds, const fs::path& folder, Table& table) {
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
  table.add_times("digest of 256 MiB / sha1sum", median(ours), median(theirs), 1);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) return 2;
  const Programs programs{fs::absolute(argv[1]), fs::absolute(argv[2])};
  const int rounds = std::atoi(argv[3]);
  const std::vector<fs::path> sites(argv + 4, argv + argc);
  Table table("whole runs");
  std::vector<double> walls;
  walls.reserve(sites.size());
  for (const fs::path& site : sites) walls.push_back(compare_site(programs, rounds, site, table));
  if (walls.size() > 1) {
    table.add_times("the largest site / the one before it", walls.back(), walls[walls.size() - 2],
                    12);
  }
  compare_digests(rounds, sites.front().parent_path(), table);
  return table.status();
}
