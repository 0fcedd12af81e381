// Whether the annotations in a type's schema stand where they mean something, and agree with each
// other.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"
#include "schema/type_file_findings.h"

#include <string>
#include <string_view>
#include <vector>

namespace TypeFiles {

/// A property with a "default".
struct AnnotatedDefault {
  std::string pointer;  ///< of the "default", in the file
  const Json::Value* property = nullptr;
  const Json::Value* value = nullptr;
};

/// Walks the schema once.
/// \param key  the type's key
/// \return the defaults of all properties, those in definitions included
std::vector<AnnotatedDefault> CheckAnnotations(const Json::TypeSchemaView& type,
                                               std::string_view key, Findings& findings);

}  // namespace TypeFiles
