#include "toplistctl/lib/output/value.h"

#include <nlohmann/json.hpp>

namespace toplist::ctl {
namespace {

using Json = nlohmann::ordered_json;

Json json_of(const Value& value);

struct ToJson {
  Json operator()(std::monostate /*nothing*/) const { return nullptr; }
  Json operator()(const List& list) const {
    Json array = Json::array();
    for (const Value& value : list) array.push_back(json_of(value));
    return array;
  }
  Json operator()(const Members& members) const {
    Json object = Json::object();
    for (const auto& [name, value] : members) object[name] = json_of(value);
    return object;
  }
  template <typename Scalar>
  Json operator()(const Scalar& scalar) const {
    return scalar;
  }
};

Json json_of(const Value& value) {
  return std::visit(ToJson{}, static_cast<const Value::Base&>(value));
}

std::string dump(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string json_text(const Value& value) { return dump(json_of(value)) + "\n"; }

std::string as_utf8(std::string_view text) {
  return Json::parse(dump(Json(std::string(text)))).get<std::string>();
}

}  // namespace toplist::ctl
