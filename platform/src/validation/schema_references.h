// Where a schema's references lead.
#pragma once

#include "platform/json.h"

#include <string>
#include <string_view>
#include <unordered_map>

namespace JsonValidator {

/// Finds what "$ref" refers to inside one schema document: by JSON Pointer, and by the names that
/// "$id" gives to parts of it.
class SchemaReferences {
 public:
  explicit SchemaReferences(const Json::Value& schema) : schema_(schema) {}

  /// The value that the reference `reference`, a text, leads to; null, with what is wrong in
  /// `fault`, when it leads nowhere.
  const Json::Value* Resolve(const Json::Value& reference, std::string& fault);

 private:
  struct Part {
    const Json::Value* value;
    std::string base;  ///< the URI that references in it are relative to
  };

  void FindNames();
  void FindName(Part& part);

  const Json::Value& schema_;
  bool searched_ = false;
  bool hasNames_ = false;
  std::unordered_map<std::string, const Json::Value*> named_;
  std::unordered_map<const Json::Value*, std::string> bases_;  ///< of references
};

}  // namespace JsonValidator
