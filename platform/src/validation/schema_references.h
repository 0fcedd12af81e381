// Where a schema's references lead.
#pragma once

#include "platform/json.h"

#include <string>
#include <string_view>

namespace JsonValidator {

/// Finds what "$ref" refers to inside one schema document.
class SchemaReferences {
 public:
  explicit SchemaReferences(const Json::Value& schema) : schema_(schema) {}

  /// The value that a reference leads to; null, with what is wrong in `fault`, when it leads
  /// nowhere.
  const Json::Value* Resolve(std::string_view reference, std::string& fault) const;

 private:
  const Json::Value& schema_;
};

}  // namespace JsonValidator
