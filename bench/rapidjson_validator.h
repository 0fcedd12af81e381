// RapidJSON's own validator, to be measured against.
#pragma once

#include "json/json.h"

#include <rapidjson/schema.h>

namespace Benchmarks {

/// One schema compiled once, and one validator that is reset for each value. Stops at the first
/// fault; checks no formats. Used by one thread.
class RapidJsonValidator {
 public:
  explicit RapidJsonValidator(const Json::Value& schema) : schema_(schema), validator_(schema_) {}

  bool Accepts(const Json::Value& value) {
    validator_.Reset();
    return value.Accept(validator_);
  }

 private:
  using Schema = rapidjson::GenericSchemaDocument<Json::Value>;
  Schema schema_;
  rapidjson::GenericSchemaValidator<Schema> validator_;
};

}  // namespace Benchmarks
