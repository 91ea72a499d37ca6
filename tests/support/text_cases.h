#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "util/text.h"

namespace toplist::test {

/// The texts of a case, by name.
struct TextCase {
  std::string name;
  std::map<std::string, std::string> texts;
};

/// Reads the cases of a file in tests/data. A line "=== NAME" begins a case, a line "--- NAME" one
/// of its texts. There "\r", "\t", "\0" and hexadecimal ones such as "\xE4" are the bytes that they
/// name, and a "\" at the end of a line keeps the line feed away.
inline std::vector<TextCase> read_text_cases(const std::string& name) {
  std::ifstream file(TOPLIST_TEST_DATA "/" + name);
  std::vector<TextCase> cases;
  std::string* text = nullptr;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("=== ")) {
      cases.push_back({line.substr(4), {}});
    } else if (line.starts_with("--- ")) {
      text = &cases.at(cases.size() - 1).texts[line.substr(4)];
    } else if (text != nullptr) {
      line += '\n';
      replace_all(line, "\\\n", "");
      replace_all(line, "\\r", "\r");
      replace_all(line, "\\t", "\t");
      replace_all(line, "\\0", std::string(1, '\0'));
      for (std::size_t at = 0; (at = line.find("\\x", at)) != std::string::npos; ++at) {
        line.replace(at, 4, 1, static_cast<char>(std::stoi(line.substr(at + 2, 2), nullptr, 16)));
      }
      *text += line;
    }
  }
  EXPECT_FALSE(cases.empty()) << name;
  return cases;
}

/// Compares what `answer` gives with the lines "INPUT" => "OUTPUT" of a case of
/// data/function_cases.txt. In both, "\n" is a line feed. What follows the last quote is a comment.
template <typename Answer>
void expect_cases(const std::string& name, Answer answer) {
  int count = 0;
  for (TextCase& c : read_text_cases("function_cases.txt")) {
    if (c.name != name) continue;
    std::istringstream lines(c.texts["cases"]);
    for (std::string line; std::getline(lines, line);) {
      const std::size_t input_end = line.find("\" => \""), last = line.rfind('"');
      if (line[0] != '"' || input_end == std::string::npos) continue;
      std::string input = line.substr(1, input_end - 1), output = line.substr(input_end + 6);
      output.resize(last - input_end - 6);
      for (std::string* text : {&input, &output}) replace_all(*text, "\\n", "\n");
      EXPECT_EQ(answer(input), output) << line;
      ++count;
    }
  }
  EXPECT_GT(count, 0) << name;
}

}  // namespace toplist::test
