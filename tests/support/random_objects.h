// Objects made at random, and how to tell whether two say the same.
#pragma once

#include "json/type_schema_view.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace TestSupport {

/// Random numbers from a seed that is printed, or given by TARN_TEST_SEED.
class Random {
 public:
  Random() {
    const char* asked = std::getenv("TARN_TEST_SEED");
    seed_ = asked == nullptr ? std::random_device()() : std::strtoul(asked, nullptr, 10);
    random_.seed(seed_);
    std::cout << "seed " << seed_ << " (TARN_TEST_SEED repeats it)" << std::endl;
  }
  explicit Random(unsigned long seed) : seed_(seed), random_(seed) {}
  unsigned long Seed() const { return seed_; }
  unsigned long Below(unsigned long limit) { return random_() % limit; }
  bool OneIn(unsigned long count) { return Below(count) == 0; }

 private:
  unsigned long seed_;
  std::mt19937_64 random_;
};

/// Makes objects that a type allows; a schema's "x-admits" names a member that it admits beside its
/// properties. In each object some names are not used at all, so that many hold data of one part only.
class RandomObjects {
 public:
  /// Numbers in them are less than `limit`: the smaller it is, the more of them are alike.
  explicit RandomObjects(Random& random, unsigned long limit = 100)
      : random_(random), limit_(limit) {}
  std::string Make(Json::SchemaPlace type, const std::string& instance) {
    used_.clear();
    elements_ = 12;
    return Object(type, instance);
  }

 private:
  bool Uses(std::string_view name) {
    const auto [known, isNew] = used_.try_emplace(std::string(name), false);
    known->second = isNew ? random_.OneIn(2) : known->second;
    return known->second && !random_.OneIn(3);
  }
  std::string Object(Json::SchemaPlace place, const std::string& id) {
    std::string json;
    const auto add = [&json](std::string_view name, const std::string& value) {
      json.append(json.empty() ? "{\"" : ",\"").append(name).append("\":").append(value);
    };
    const std::string_view idMember = place.InstanceIdMember();
    if (!idMember.empty()) {
      add(idMember, "\"" + id + "\"");
    }
    place.ForEachProperty([&](std::string_view name, Json::SchemaPlace property) {
      if (name != idMember && Uses(name)) {
        add(name, Value(property));
      }
    });
    const Json::Value* other = Json::FindMember(*place.Schema(), "x-admits");
    if (other != nullptr && Uses(Json::Text(*other))) {
      add(Json::Text(*other), std::to_string(random_.Below(limit_)));
    }
    return json.empty() ? "{}" : json + "}";
  }
  std::string Value(Json::SchemaPlace place, const std::string& id = "") {
    const Json::Value* type = place ? Json::FindMember(*place.Schema(), "type") : nullptr;
    const bool nullable = type != nullptr && type->IsArray();
    const std::string_view kind =
        type == nullptr ? "integer" : Json::Text(nullable ? (*type)[0] : *type);
    if (kind == "null" || (nullable && random_.OneIn(3))) {
      return "null";
    }
    if (kind == "object") {
      return Object(place, id);
    }
    if (kind == "array") {
      std::string json;
      for (unsigned long i = random_.Below(4); i > 0 && elements_ > 0; --i) {
        --elements_;
        const std::string element = Value(place.Items(), std::to_string(i));
        json = json.empty()       ? element
               : random_.OneIn(2) ? element + "," + json
                                  : json + "," + element;
      }
      return "[" + json + "]";
    }
    const std::string number = std::to_string(random_.Below(limit_));
    return kind == "string" ? "\"" + number + "\"" : number;
  }

  Random& random_;
  unsigned long limit_;
  std::map<std::string, bool> used_;
  int elements_ = 0;  // that may yet be made
};

/// A value's text with its members sorted, and without those that are null.
inline std::string Canonical(const Json::Value& value) {
  std::string text;
  std::vector<std::string> parts;
  if (value.IsObject()) {
    for (const auto& member : value.GetObject()) {
      parts.push_back(member.value.IsNull()
                          ? ""
                          : std::string(Json::Text(member.name)) + ":" + Canonical(member.value));
    }
    std::sort(parts.begin(), parts.end());
  } else if (value.IsArray()) {
    for (const Json::Value& element : value.GetArray()) {
      parts.push_back(Canonical(element));
    }
  } else {
    Json::Serialize(value, text);
  }
  for (const std::string& part : parts) {
    text += part.empty() ? "" : part + " ";
  }
  return value.IsObject() ? "{" + text + "}" : value.IsArray() ? "[" + text + "]" : text;
}

inline Json::Document Parsed(const std::string& text) {
  Json::Document value;
  Json::Parse(text, value);
  return value;
}

}  // namespace TestSupport
