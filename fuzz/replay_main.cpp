// Runs one fuzz target over saved inputs: the files named, and all files in the folders named. With
// "--random=COUNT" also over so many that are joined from pieces of these, the same in each run.

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestPiece = 24;

void try_input(const std::string& bytes) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

std::string replay(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    std::cerr << "cannot open " << path << '\n';
    std::exit(1);
  }
  std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  std::cout << path.filename().string() << ": " << bytes.size() << " bytes" << std::endl;
  try_input(bytes);
  return bytes;
}

/// A saved input in which pieces have been replaced by those of others.
std::string random_input(const std::vector<std::string>& saved, std::mt19937& random) {
  std::string bytes = saved[random() % saved.size()];
  for (auto pieces = 1 + random() % 8; pieces > 0; --pieces) {
    const std::string& other = saved[random() % saved.size()];
    const std::size_t at = random() % (bytes.size() + 1), from = random() % (other.size() + 1);
    const std::size_t replaced = random() % kLongestPiece, size = random() % kLongestPiece;
    bytes.replace(at, replaced, other, from, size);
  }
  return bytes;
}

std::string finding;  ///< the random input under way, and where it goes when it ends the process
std::string finding_path;

void save_finding(int /*signal*/) { std::ofstream(finding_path, std::ios::binary) << finding; }

void try_random_inputs(std::vector<std::string> saved, int count) {
  std::mt19937 random(1);
  std::sort(saved.begin(), saved.end());  // folders list their files in any order
  std::cout << "random inputs; that of a finding goes to " << finding_path << std::endl;
  std::signal(SIGABRT, save_finding);
  while (count-- > 0) {
    finding = random_input(saved, random);
    try_input(finding);
  }
}

}  // namespace

int main(int argc, char** argv) {
  constexpr std::string_view kRandom = "--random=";
  std::vector<std::string> saved;
  int random_inputs = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument.starts_with(kRandom)) {
      random_inputs = std::stoi(argument.substr(kRandom.size()));
    } else if (!fs::is_directory(argument)) {
      saved.push_back(replay(argument));
    } else {
      for (const auto& entry : fs::directory_iterator(argument)) saved.push_back(replay(entry));
    }
  }
  std::cout << saved.size() << " inputs replayed\n";
  if (saved.empty()) return 1;  // a folder without inputs is a mistake
  finding_path = std::string(argv[0]) + ".finding";
  try_random_inputs(std::move(saved), random_inputs);
  return 0;
}
