#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace toplist::test {

/// A fresh directory that goes with its contents at the end of the test.
class TempDir {
 public:
  TempDir() : path_(testing::TempDir() + "toplist-XXXXXX") {
    if (::mkdtemp(path_.data()) == nullptr) throw std::filesystem::filesystem_error(path_, {});
  }
  ~TempDir() { std::filesystem::remove_all(path_); }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }

  /// Writes a file of this name and returns its path.
  [[nodiscard]] std::string write(const std::string& name, std::string_view bytes) const {
    std::ofstream(path_ + "/" + name, std::ios::binary) << bytes;
    return path_ + "/" + name;
  }

  [[nodiscard]] std::string read(const std::string& name) const {
    std::ifstream file(path_ + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::string path_;
};

}  // namespace toplist::test
