#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace toplist::ctl {

/// Keeps members in the order in which they are added.
using Json = nlohmann::ordered_json;

/// The value as text, ended by a line feed. Site files may hold any bytes: those that are not UTF-8
/// become U+FFFD.
inline std::string json_text(const Json& value) {
  return value.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace toplist::ctl
