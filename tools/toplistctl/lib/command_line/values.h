#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace toplist::ctl {

/// What may stand for an argument whose value the help calls so, such as "TEMPLATE".
struct ValueType {
  std::string_view name;
  std::string_view action;              ///< as in Completion
  std::vector<std::string> (*words)();  ///< nullptr without any; the site is the working directory
};

/// nullptr for values that nobody can guess, such as "N".
const ValueType* value_type_named(std::string_view name);

}  // namespace toplist::ctl
