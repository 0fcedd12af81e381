#include "json_schema/compiled_node.h"

#include "json_schema/number.h"

namespace JsonValidator {

TypeSet TypeOf(const Json::Value& value) {
  switch (value.GetType()) {
    case rapidjson::kNullType:
      return kNullType;
    case rapidjson::kFalseType:
    case rapidjson::kTrueType:
      return kBooleanType;
    case rapidjson::kObjectType:
      return kObjectType;
    case rapidjson::kArrayType:
      return kArrayType;
    case rapidjson::kStringType:
      return kTextType;
    default:
      return IsWhole(value) ? kIntegerType : kNumberType;
  }
}

}  // namespace JsonValidator
