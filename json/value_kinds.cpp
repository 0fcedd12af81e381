#include "json/value_kinds.h"

#include <array>

namespace Json {
namespace {

struct KindName {
  std::string_view name;
  std::uint8_t bits;
};

// "number" stands before "integer", which it covers.
constexpr std::array<KindName, 7> kKindNames = {{
    {"number", ValueKinds::kNumber},
    {"integer", ValueKinds::kInteger},
    {"boolean", ValueKinds::kBoolean},
    {"string", ValueKinds::kString},
    {"array", ValueKinds::kArray},
    {"object", ValueKinds::kObject},
    {"null", ValueKinds::kNull},
}};

}  // namespace

ValueKinds ValueKinds::Named(std::string_view typeName) {
  for (const KindName& kind : kKindNames) {
    if (kind.name == typeName) {
      return ValueKinds(kind.bits);
    }
  }
  return ValueKinds(0);
}

ValueKinds ValueKinds::Of(const Value& value) {
  switch (value.GetType()) {
    case rapidjson::kFalseType:
    case rapidjson::kTrueType:
      return ValueKinds(kBoolean);
    case rapidjson::kNumberType:
      return ValueKinds(value.IsDouble() ? kFraction : kInteger);
    case rapidjson::kStringType:
      return ValueKinds(kString);
    case rapidjson::kArrayType:
      return ValueKinds(kArray);
    case rapidjson::kObjectType:
      return ValueKinds(kObject);
    case rapidjson::kNullType:
      break;
  }
  return ValueKinds(kNull);
}

std::string ValueKinds::Describe() const {
  std::string text;
  ValueKinds rest = *this;
  for (const KindName& kind : kKindNames) {
    if (rest.Holds(kind.bits)) {
      text += (text.empty() ? "" : " or ") + std::string(kind.name);
      rest = ValueKinds(static_cast<std::uint8_t>(rest.bits_ & ~kind.bits));
    }
  }
  return text.empty() ? "no value" : text;
}

}  // namespace Json
