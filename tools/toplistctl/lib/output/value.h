#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace toplist::ctl {

struct Value;
using List = std::vector<Value>;
/// Named values, in the order in which they were added.
using Members = std::vector<std::pair<std::string, Value>>;

/// What a command reports, before it is written as a table, CSV or JSON: nothing, a truth value, a
/// whole number, a text, a list, or an object of named values.
struct Value : std::variant<std::monostate, bool, std::int64_t, std::string, List, Members> {
  using Base = std::variant<std::monostate, bool, std::int64_t, std::string, List, Members>;

  Value() = default;
  Value(std::same_as<bool> auto value) : Base(value) {}
  template <std::integral Number>
  requires(!std::same_as<Number, bool>) Value(Number number)
      : Base(static_cast<std::int64_t>(number)) {}
  Value(std::string text) : Base(std::move(text)) {}
  Value(std::string_view text) : Base(std::string(text)) {}
  Value(const char* text) : Base(std::string(text)) {}
  Value(List list) : Base(std::move(list)) {}
  Value(Members members) : Base(std::move(members)) {}
  template <typename T>
  Value(const std::optional<T>& value) : Value(value ? Value(*value) : Value()) {}

  template <typename T>
  [[nodiscard]] bool is() const {
    return std::holds_alternative<T>(*this);
  }
};

/// The value as indented JSON, ended by a line feed. Site files may hold any bytes: those that are
/// not UTF-8 become U+FFFD.
std::string json_text(const Value& value);

/// The text in UTF-8, by the same replacement.
std::string as_utf8(std::string_view text);

}  // namespace toplist::ctl
