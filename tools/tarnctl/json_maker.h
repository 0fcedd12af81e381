// JSON values made by the tool.
#pragma once

#include "json/json.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnctl {

/// Makes JSON values and owns their memory: they live as long as it does.
class JsonMaker {
 public:
  JsonMaker() = default;
  JsonMaker(const JsonMaker&) = delete;
  JsonMaker& operator=(const JsonMaker&) = delete;

  Json::Allocator& GetAllocator() { return pool_; }

  /// Parses what the library says. Raises std::runtime_error for what is not JSON.
  Json::Value Parse(std::string_view text);

  static Json::Value Of(std::nullptr_t) { return {}; }
  static Json::Value Of(bool value) { return Json::Value(value); }
  static Json::Value Of(int value) { return Json::Value(value); }
  static Json::Value Of(Json::Value value) { return value; }
  Json::Value Of(std::string_view text) { return Json::Copy(text, pool_); }
  Json::Value Of(const std::string& text) { return Json::Copy(text, pool_); }
  Json::Value Of(const char* text) { return Json::Copy(text, pool_); }
  Json::Value Of(const std::vector<std::string>& texts) {
    return List(texts, [this](const std::string& text) { return Of(text); });
  }

  /// An object of names and what Of makes of the value after each.
  template <class... NamesAndValues>
  Json::Value Object(NamesAndValues&&... members) {
    Json::Value object(rapidjson::kObjectType);
    AddMembers(object, std::forward<NamesAndValues>(members)...);
    return object;
  }

  /// An array of what `make` makes of each element.
  template <class Elements, class Make>
  Json::Value List(const Elements& elements, const Make& make) {
    Json::Value list(rapidjson::kArrayType);
    for (const auto& element : elements) {
      list.PushBack(Of(make(element)), pool_);
    }
    return list;
  }

  /// Adds a member to an object.
  template <class Value>
  void Add(Json::Value& object, const char* name, Value&& value) {
    AddMembers(object, name, std::forward<Value>(value));
  }

 private:
  static void AddMembers(Json::Value& /*object*/) {}
  template <class Value, class... Rest>
  void AddMembers(Json::Value& object, const char* name, Value&& value, Rest&&... rest) {
    object.AddMember(Json::Reference(name), Of(std::forward<Value>(value)), pool_);
    AddMembers(object, std::forward<Rest>(rest)...);
  }

  Json::Allocator pool_;
};

}  // namespace tarnctl
