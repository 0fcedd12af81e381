// Whether the annotations in a type's schema stand where they mean something, and agree with each
// other.
#pragma once

#include "platform/json.h"

#include "schema/findings.h"

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
std::vector<AnnotatedDefault> CheckAnnotations(const Json::Value& schema, std::string_view key,
                                               Findings& findings);

}  // namespace TypeFiles
